#include "monitors/DiskMonitor.h"

#include "tests/support/TestSupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;
using namespace std::chrono_literals;

namespace {

constexpr std::uint64_t GiB = 1024ull * 1024 * 1024;

struct ScriptedDisk {
    std::optional<VolumeCapacity> capacity = VolumeCapacity{100 * GiB, 25 * GiB};
    std::optional<DiskCounters> counters;
    std::chrono::system_clock::time_point now{};
    DiskMonitor monitor{DiskSources{
        [this] { return capacity; },
        [this] { return counters; },
        [this] { return now; },
    }};
};

} // namespace

TEST(DiskParsers, DiskstatsSumsOnlyTheNamedWholeDisks)
{
    const std::string text = "   8       0 sda 10 0 100 0 20 0 300 0 0 0 0\n"
                             "   8       1 sda1 10 0 100 0 20 0 300 0 0 0 0\n"
                             " 259       0 nvme0n1 1 0 4 0 2 0 8 0 0 0 0 0 0 0 0\n"
                             "   7       0 loop0 9 0 999 0 9 0 999 0 0 0 0\n";
    EXPECT_EQ(parseDiskStats(text, {"sda", "nvme0n1"}), (DiskCounters{104 * 512, 308 * 512}));
    EXPECT_FALSE(parseDiskStats(text, {"vdb"}));
    EXPECT_FALSE(parseDiskStats("   8 0 sda 10 0\n", {"sda"}));
    const auto fixture = test::fixture("monitors/diskstats.txt").toStdString();
    EXPECT_EQ(parseDiskStats(fixture, {"vda"}), (DiskCounters{2826850ull * 512, 728616ull * 512}));
}

TEST(DiskParsers, PhysicalDisksAreThoseWithADeviceLink)
{
    QTemporaryDir sys;
    test::writeFile(sys.path(), QStringLiteral("block/sda/device/model"), "disk");
    test::writeFile(sys.path(), QStringLiteral("block/loop0/size"), "0");
    test::writeFile(sys.path(), QStringLiteral("block/dm-0/size"), "0");
    EXPECT_EQ(physicalDiskNames(sys.path().toStdString()), (std::set<std::string>{"sda"}));
    EXPECT_TRUE(physicalDiskNames("/nonexistent").empty());
}

TEST(DiskMonitor, CapacityFromTheFirstCycleRatesFromTheSecond)
{
    ScriptedDisk disk;
    disk.counters = DiskCounters{1000, 5000};
    disk.monitor.sample();
    EXPECT_DOUBLE_EQ(disk.monitor.totalGB(), 100.0);
    EXPECT_DOUBLE_EQ(disk.monitor.usedGB(), 75.0);
    EXPECT_DOUBLE_EQ(disk.monitor.usagePercent(), 75.0);
    EXPECT_EQ(disk.monitor.readBytesPerSec(), 0.0);
    EXPECT_TRUE(disk.monitor.history().isEmpty());

    // Same instant: only the baseline moves.
    disk.counters = DiskCounters{3000, 6000};
    disk.monitor.sample();
    EXPECT_TRUE(disk.monitor.history().isEmpty());

    disk.now += 2s;
    disk.counters = DiskCounters{5000, 7000};
    disk.monitor.sample();
    EXPECT_DOUBLE_EQ(disk.monitor.readBytesPerSec(), 1000.0);
    EXPECT_DOUBLE_EQ(disk.monitor.writeBytesPerSec(), 500.0);
    EXPECT_EQ(disk.monitor.history().last(), (DiskIOHistoryPoint{0, 1000.0, 500.0}));

    // A counter that went backwards gives 0 in that direction only.
    disk.now += 1s;
    disk.counters = DiskCounters{10, 8000};
    disk.monitor.sample();
    EXPECT_EQ(disk.monitor.readBytesPerSec(), 0.0);
    EXPECT_DOUBLE_EQ(disk.monitor.writeBytesPerSec(), 1000.0);
}

TEST(DiskMonitor, FailedReadingsKeepFiguresAndBaseline)
{
    ScriptedDisk disk;
    disk.counters = DiskCounters{0, 0};
    disk.monitor.sample();
    disk.capacity.reset();
    disk.counters.reset();
    disk.now += 1s;
    disk.monitor.sample();
    EXPECT_DOUBLE_EQ(disk.monitor.totalGB(), 100.0);

    // The baseline from before the failure still counts: 4 s since it, 4000 bytes.
    disk.now += 3s;
    disk.counters = DiskCounters{4000, 0};
    disk.monitor.sample();
    EXPECT_DOUBLE_EQ(disk.monitor.readBytesPerSec(), 1000.0);

    // Free space above capacity: nothing used. A zero capacity changes nothing.
    disk.capacity = VolumeCapacity{10, 20};
    disk.monitor.sample();
    EXPECT_EQ(disk.monitor.usagePercent(), 0.0);
    EXPECT_EQ(disk.monitor.usedGB(), 0.0);
    disk.capacity = VolumeCapacity{0, 0};
    disk.monitor.sample();
    EXPECT_DOUBLE_EQ(disk.monitor.freeGB(), 20.0 / GiB);
}

TEST(DiskMonitor, RealMachineRootVolumeAndDisks)
{
    DiskMonitor monitor;
    monitor.sample();
    EXPECT_GT(monitor.totalGB(), 0.0);
    EXPECT_NEAR(monitor.usedGB() + monitor.freeGB(), monitor.totalGB(), monitor.totalGB() * 0.1);
    if (physicalDiskNames().empty())
        GTEST_SKIP() << "this machine shows no physical disk in /sys/block";
    // The disk the system booted from has been read from.
    const auto counters = linuxDiskSources().readCounters();
    ASSERT_TRUE(counters);
    EXPECT_GT(counters->read, 0u);
}
