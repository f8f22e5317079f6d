#include "monitors/MemoryMonitor.h"
#include "monitors/ZramDevices.h"

#include "tests/support/ManualScheduler.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

constexpr std::uint64_t GiB = 1024ull * 1024 * 1024;

struct ScriptedMemory {
    std::optional<MemoryCounters> counters;
    ProgramMemoryMap programs;
    MemoryMonitor monitor{MemorySources{
        [this] { return counters; },
        [this] { return programs; },
    }};
};

} // namespace

TEST(MemoryParsers, MeminfoSplitsUsedIntoActiveWiredAndCompressed)
{
    const auto counters = parseMemInfo("MemTotal: 1000 kB\nMemFree: 100 kB\nMemAvailable: 400 kB\n"
                                       "SUnreclaim: 50 kB\nKernelStack: 10 kB\nPageTables: 20 kB\n"
                                       "Unevictable: 20 kB\nZswap: 30 kB\nZswapped: 90 kB\n",
                                       10 * 1024);
    ASSERT_TRUE(counters);
    EXPECT_EQ(counters->installed, 1000u * 1024);
    EXPECT_EQ(counters->wired, 100u * 1024);
    EXPECT_EQ(counters->compressed, 40u * 1024);
    // used = MemTotal - MemAvailable, whatever the split.
    EXPECT_EQ(counters->active + counters->wired + counters->compressed, 600u * 1024);

    // Kernel memory larger than what is unavailable (odd accounting) leaves active at 0.
    EXPECT_EQ(parseMemInfo("MemTotal: 100 kB\nMemAvailable: 90 kB\nSUnreclaim: 50 kB\n")->active, 0u);
    EXPECT_FALSE(parseMemInfo("MemTotal: 100 kB\nMemFree: 90 kB\n"));
    EXPECT_FALSE(parseMemInfo("MemTotal: lots\nMemAvailable: 90 kB\n"));

    const auto real = parseMemInfo(test::fixture("monitors/meminfo.txt").toStdString());
    ASSERT_TRUE(real);
    EXPECT_EQ(real->installed, 24683620ull * 1024);
    EXPECT_EQ(parseZramMemUsed("4096 1024 8192 0 8192 0 0 0 0\n"), 8192u);
    EXPECT_EQ(parseZramMemUsed(test::fixture("monitors/zram0_mm_stat.txt").toStdString()), 0u);
    EXPECT_EQ(parseZramMemUsed("garbage"), 0u);
}

TEST(MemoryParsers, PsOutputGroupedByWholeTaskName)
{
    const auto programs = parsePsOutput("  100 bash\n"
                                        "   20 bash\n"
                                        "    7 Web Content\n"
                                        "   64 kworker/u8:2-events\n"
                                        "    0 kworker/u8:2-events\n"
                                        "   30\n"
                                        "  abc worker\n"
                                        "   12    \n"
                                        "\n");
    EXPECT_EQ(programs.at(QStringLiteral("bash")), (ProgramMemory{120 * 1024, 2}));
    EXPECT_EQ(programs.at(QStringLiteral("Web Content")), (ProgramMemory{7 * 1024, 1}));
    // A slash in a task name is part of it, and the zero-size kernel thread is left out.
    EXPECT_EQ(programs.at(QStringLiteral("kworker/u8:2-events")), (ProgramMemory{64 * 1024, 1}));
    EXPECT_EQ(programs.size(), 3u);

    EXPECT_TRUE(parsePsOutput(QByteArray("  10 caf\xff\xfe\n")).empty());
    const auto real = parsePsOutput(test::fixture("monitors/ps_rss_comm.txt"));
    EXPECT_EQ(real.size(), 5u) << "the kernel threads of the capture are left out";
    EXPECT_FALSE(real.contains(QStringLiteral("kthreadd")));
    EXPECT_FALSE(real.contains(QStringLiteral("R-rcu_gp")));
}

// zram devices set up after start are counted from the next listing on, and one that went
// away counts nothing.
TEST(MemoryParsers, ZramDevicesAreListedAgainNowAndThen)
{
    QTemporaryDir sys;
    test::writeFile(sys.path(), QStringLiteral("block/zram0/mm_stat"), "4096 1024 8192 0 8192 0 0 0 0\n");
    test::writeFile(sys.path(), QStringLiteral("block/sda/stat"), "1 2 3\n");
    ZramDevices zram(sys.path().toStdString(), 3);
    EXPECT_EQ(zram.memUsed(), 8192u);
    test::writeFile(sys.path(), QStringLiteral("block/zram1/mm_stat"), "0 0 100 0 0 0 0 0 0\n");
    EXPECT_EQ(zram.memUsed(), 8192u);
    EXPECT_EQ(zram.memUsed(), 8192u);
    EXPECT_EQ(zram.memUsed(), 8292u);
    ASSERT_TRUE(QDir(sys.filePath(QStringLiteral("block/zram0"))).removeRecursively());
    EXPECT_EQ(zram.memUsed(), 100u);
    EXPECT_EQ(ZramDevices("/nonexistent").memUsed(), 0u);
}

TEST(MemoryMonitor, FiguresInGigabytesAndClampedUsage)
{
    ScriptedMemory memory;
    memory.counters = MemoryCounters{16 * GiB, 6 * GiB, 2 * GiB, 1 * GiB};
    QSignalSpy used(&memory.monitor, &MemoryMonitor::usedGBChanged);
    memory.monitor.sample();
    EXPECT_DOUBLE_EQ(memory.monitor.usedGB(), 9.0);
    EXPECT_DOUBLE_EQ(memory.monitor.freeGB(), 7.0);
    EXPECT_DOUBLE_EQ(memory.monitor.totalGB(), 16.0);
    EXPECT_DOUBLE_EQ(memory.monitor.usagePercent(), 56.25);
    EXPECT_DOUBLE_EQ(memory.monitor.compressedGB(), 1.0);
    // Unlike CPU there is no baseline: the first sample already has a history point.
    EXPECT_EQ(memory.monitor.history().size(), 1);

    // The same reading again notifies nobody of the figures but still adds a point.
    memory.monitor.sample();
    EXPECT_EQ(used.count(), 1);
    EXPECT_EQ(memory.monitor.history().last(), (MemoryHistoryPoint{1, 56.25}));

    memory.counters = MemoryCounters{4 * GiB, 4 * GiB, 1 * GiB, 0};
    memory.monitor.sample();
    EXPECT_DOUBLE_EQ(memory.monitor.usagePercent(), 100.0);
    EXPECT_DOUBLE_EQ(memory.monitor.freeGB(), 0.0);

    // A failed reading keeps everything.
    memory.counters.reset();
    memory.monitor.sample();
    EXPECT_DOUBLE_EQ(memory.monitor.usagePercent(), 100.0);
    EXPECT_EQ(memory.monitor.history().size(), 3);
}

TEST(MemoryMonitor, PerProgramRowsAndEmptyCollections)
{
    ScriptedMemory memory;
    memory.counters = MemoryCounters{8 * GiB, 0, 0, 0};
    memory.monitor.applyPrograms({{QStringLiteral("bash"), {2 * GiB, 3}}});
    ASSERT_EQ(memory.monitor.perProcess().size(), 1);
    EXPECT_EQ(memory.monitor.perProcess().first(),
              (ProcessMemoryUsage{QStringLiteral("bash"), QStringLiteral("bash"), 2 * GiB, 25.0, 3}));

    // An empty collection (ps missing, garbage output) keeps the previous list.
    memory.monitor.applyPrograms({});
    EXPECT_EQ(memory.monitor.perProcess().size(), 1);

    // Without an installed size the share is 0, not a division by zero.
    memory.counters = MemoryCounters{};
    memory.monitor.applyPrograms({{QStringLiteral("x"), {1, 1}}});
    EXPECT_EQ(memory.monitor.perProcess().first().percent, 0.0);
}

TEST(MemoryMonitor, RealMachineCountersAndPs)
{
    MemoryMonitor monitor;
    monitor.sample();
    EXPECT_GT(monitor.totalGB(), 0.1);
    EXPECT_GT(monitor.usedGB(), 0.0);
    EXPECT_NEAR(monitor.usedGB() + monitor.freeGB(), monitor.totalGB(), 1e-9);

    monitor.startPerProcessMonitoring();
    test::finishDetachedWork();
    const auto& rows = monitor.perProcess();
    EXPECT_TRUE(std::any_of(rows.begin(), rows.end(), [](const ProcessMemoryUsage& row) {
        return row.name == QStringLiteral("tests_monitors") && row.memoryBytes > 0;
    }));
    monitor.stopPerProcessMonitoring();
}
