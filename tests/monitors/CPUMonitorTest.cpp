#include "monitors/CPUMonitor.h"

#include "tests/support/ManualScheduler.h"
#include "tests/support/TestSupport.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <atomic>
#include <deque>

using namespace tallowmere;
using namespace std::chrono_literals;

namespace {

// A monitor whose tick readings are taken from a queue the test fills.
struct ScriptedCPU {
    std::deque<std::optional<CPUTicks>> readings;
    CPUMonitor monitor{CPUSources{
        [this]() -> std::optional<CPUTicks> {
            if (readings.empty())
                return std::nullopt;
            auto next = readings.front();
            readings.pop_front();
            return next;
        },
        [] { return ProcessSnapshot{}; },
    }};
};

ProcessSnapshot snapshotAt(double seconds, std::unordered_map<std::int32_t, std::uint64_t> cpu)
{
    ProcessSnapshot snapshot;
    snapshot.time = std::chrono::system_clock::time_point{} + std::chrono::duration_cast<std::chrono::system_clock::duration>(
                        std::chrono::duration<double>(seconds));
    for (const auto& [pid, time] : cpu) {
        snapshot.cpuTime[pid] = time;
        snapshot.memory[pid] = 4096u * static_cast<std::uint64_t>(pid);
        snapshot.names[pid] = QStringLiteral("proc%1").arg(pid);
    }
    return snapshot;
}

} // namespace

TEST(CPUParsers, AggregateLineFoldsInterruptsAndStealIntoSystemAndIOWaitIntoIdle)
{
    const auto ticks = parseCPUTicks("cpu  100 5 200 1000 50 7 3 2 9 9\ncpu0 1 1 1 1 1 1 1 1\n");
    ASSERT_TRUE(ticks);
    EXPECT_EQ(*ticks, (CPUTicks{100, 212, 1050, 5}));
    EXPECT_TRUE(parseCPUTicks(test::fixture("monitors/proc_stat.txt").toStdString()));
    // Old kernels stop after idle; anything shorter or not numeric is no reading.
    EXPECT_EQ(*parseCPUTicks("cpu 1 2 3 4\n"), (CPUTicks{1, 3, 4, 2}));
    EXPECT_FALSE(parseCPUTicks("cpu 1 2 3\n"));
    EXPECT_FALSE(parseCPUTicks("cpu 1 2 x 4 5\n"));
    EXPECT_FALSE(parseCPUTicks("cpu0 1 2 3 4\nintr 5\n"));
    EXPECT_FALSE(parseCPUTicks(""));
}

TEST(CPUParsers, ProcessStatLineWithBlanksAndParenthesesInTheName)
{
    const std::string oddText = test::fixture("monitors/pid_stat_odd_name.txt").toStdString();
    const auto odd = parseProcessStat(oddText);
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->pid, 6295);
    EXPECT_EQ(odd->name, "we ird) (x");
    EXPECT_EQ(odd->residentPages, 407u);

    const std::string kernelText = test::fixture("monitors/pid_stat_kthread.txt").toStdString();
    const auto kernelThread = parseProcessStat(kernelText);
    ASSERT_TRUE(kernelThread);
    EXPECT_EQ(kernelThread->name, "kthreadd");
    EXPECT_EQ(kernelThread->residentPages, 0u);

    EXPECT_EQ(parseProcessStat("12 (a) S 1 1 1 0 -1 0 0 0 0 0 30 12 0 0 20 0 1 0 5 100 77 0")->cpuTicks, 42u);
    EXPECT_FALSE(parseProcessStat("12 (truncated) S 1 1"));
    EXPECT_FALSE(parseProcessStat("x (a) S 1 1 1 0 -1 0 0 0 0 0 30 12 0 0 20 0 1 0 5 100 77 0"));
    EXPECT_FALSE(parseProcessStat("no parentheses at all"));
    // A century of ticks must not overflow on the way to nanoseconds.
    EXPECT_EQ(ticksToNanoseconds(100ull * 3'153'600'000ull, 100), 3'153'600'000ull * 1'000'000'000ull);
}

TEST(CPUMonitor, FirstAndRepeatedReadingsPublishNothing)
{
    ScriptedCPU cpu;
    QSignalSpy usage(&cpu.monitor, &CPUMonitor::currentUsageChanged);
    cpu.readings = {CPUTicks{10, 10, 80, 0}, CPUTicks{10, 10, 80, 0}, std::nullopt, CPUTicks{40, 20, 130, 10}};
    cpu.monitor.sample();
    cpu.monitor.sample();
    cpu.monitor.sample();
    EXPECT_EQ(usage.count(), 0);
    EXPECT_TRUE(cpu.monitor.history().isEmpty());

    cpu.monitor.sample();
    // Δ user 30, system 10, idle 50, nice 10 of 100: nice counts toward the total only.
    EXPECT_DOUBLE_EQ(cpu.monitor.currentUsage(), 50.0);
    EXPECT_DOUBLE_EQ(cpu.monitor.userUsage(), 30.0);
    EXPECT_DOUBLE_EQ(cpu.monitor.systemUsage(), 10.0);
    ASSERT_EQ(cpu.monitor.history().size(), 1);
    EXPECT_EQ(cpu.monitor.history().first(), (CPUHistoryPoint{0, 50.0}));

    // Counters wrapping past 32 bits still give the right differences.
    const std::uint32_t nearTop = 0xFFFFFFF0u;
    cpu.readings = {CPUTicks{nearTop, 5, nearTop, 0}, CPUTicks{nearTop + 40, 15, nearTop + 50, 0}};
    cpu.monitor.sample();
    cpu.monitor.sample();
    EXPECT_DOUBLE_EQ(cpu.monitor.currentUsage(), 50.0);
    EXPECT_DOUBLE_EQ(cpu.monitor.userUsage(), 40.0);
    EXPECT_DOUBLE_EQ(cpu.monitor.systemUsage(), 10.0);
}

TEST(CPUMonitor, PerProcessRowsNeedTwoCyclesAndNeverGoNegative)
{
    ScriptedCPU cpu;
    QSignalSpy rows(&cpu.monitor, &CPUMonitor::processesChanged);
    cpu.monitor.applySnapshot(snapshotAt(100.0, {{1, 1'000'000'000}, {2, 5'000'000'000}}));
    EXPECT_EQ(rows.count(), 0);
    // Less than 0.1 s later only the baseline moves.
    cpu.monitor.applySnapshot(snapshotAt(100.05, {{1, 1'000'000'000}, {2, 5'000'000'000}}));
    EXPECT_EQ(rows.count(), 0);

    // Two seconds later: pid 1 used 1 s of CPU (50 %), pid 2 went backwards (0 %), pid 3 is new.
    cpu.monitor.applySnapshot(snapshotAt(102.05, {{1, 2'000'000'000}, {2, 4'000'000'000}, {3, 9}}));
    ASSERT_EQ(rows.count(), 1);
    std::map<std::int32_t, ProcessCPUUsage> byPid;
    for (const auto& row : cpu.monitor.processes())
        byPid[row.pid] = row;
    ASSERT_EQ(byPid.size(), 2u);
    EXPECT_NEAR(byPid[1].cpuPercent, 50.0, 1e-9);
    EXPECT_EQ(byPid[1].name, QStringLiteral("proc1"));
    EXPECT_EQ(byPid[1].memoryBytes, 4096u);
    EXPECT_EQ(byPid[2].cpuPercent, 0.0);

    // Closing the page empties the list; reopening needs two cycles again.
    cpu.monitor.stopProcessMonitoring();
    EXPECT_TRUE(cpu.monitor.processes().isEmpty());
    cpu.monitor.applySnapshot(snapshotAt(110.0, {{1, 3'000'000'000}}));
    EXPECT_TRUE(cpu.monitor.processes().isEmpty());
}

TEST(CPUMonitor, RealMachineTicksAndProcessWalk)
{
    CPUMonitor monitor;
    // The tick counters move at 100 Hz per processor, so sampling soon publishes.
    ASSERT_TRUE(test::waitUntil([&] {
        monitor.sample();
        return !monitor.history().isEmpty();
    }));
    EXPECT_GE(monitor.currentUsage(), 0.0);
    EXPECT_LE(monitor.currentUsage(), 100.0);

    const ProcessSnapshot walk = collectProcessSnapshot();
    const auto self = static_cast<std::int32_t>(QCoreApplication::applicationPid());
    ASSERT_TRUE(walk.cpuTime.contains(self));
    EXPECT_GT(walk.memory.at(self), 1024u * 1024u);
    EXPECT_EQ(walk.names.at(self), QStringLiteral("tests_monitors"));
    EXPECT_TRUE(walk.cpuTime.contains(1));

}

TEST(CPUMonitor, ProcessLoopPublishesFromItsSecondRoundEveryTwoSeconds)
{
    auto scheduler = std::make_shared<test::ManualScheduler>();
    std::atomic<int> walks = 0;
    CPUMonitor monitor(CPUSources{[] { return std::optional<CPUTicks>(); },
                                  [&] {
                                      const int walk = walks++;
                                      return snapshotAt(2.0 * walk, {{1, 1'000'000'000ull * walk}});
                                  }},
                       scheduler);
    QSignalSpy rows(&monitor, &CPUMonitor::processesChanged);
    monitor.startProcessMonitoring();
    test::finishDetachedWork();
    EXPECT_EQ(rows.count(), 0);
    scheduler->advance(2s);
    test::finishDetachedWork();
    ASSERT_EQ(monitor.processes().size(), 1);
    EXPECT_DOUBLE_EQ(monitor.processes().first().cpuPercent, 50.0);
    scheduler->advance(2s);
    test::finishDetachedWork();
    EXPECT_EQ(walks.load(), 3);
    monitor.stopProcessMonitoring();
    EXPECT_EQ(monitor.processTask(), nullptr);
    scheduler->advance(10s);
    test::finishDetachedWork();
    EXPECT_EQ(walks.load(), 3);
}
