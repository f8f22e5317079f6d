#include "monitors/NetworkMonitor.h"

#include "tests/support/TestSupport.h"

#include <QSignalSpy>
#include <QTest>

#include <thread>

#include <atomic>
#include <memory>
#include <mutex>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using namespace std::chrono_literals;

// Sources the test controls: interface counters it sets, flow tables it queues, and a lookup
// that answers from a table and counts its calls.
struct FakeNetwork {
    ByteCounts interface;
    std::mutex mutex;
    std::vector<FlowTable> flowTables;  // handed out in order; the last one repeats
    std::atomic<int> flowSamples{0};
    std::atomic<int> lookups{0};
    QHash<QString, QString> names;

    NetworkMonitorSources sources()
    {
        NetworkMonitorSources s;
        s.interfaceBytes = [this] { return interface; };
        s.flows = [this] {
            std::lock_guard lock(mutex);
            ++flowSamples;
            if (flowTables.empty())
                return FlowTable{};
            FlowTable table = flowTables.front();
            if (flowTables.size() > 1)
                flowTables.erase(flowTables.begin());
            return table;
        };
        s.reverseLookup = [this](const QString& ip) -> std::optional<QString> {
            ++lookups;
            const auto it = names.constFind(ip);
            return it == names.cend() ? std::nullopt : std::optional<QString>(*it);
        };
        s.clock = [] { return std::chrono::system_clock::time_point(1'700'000'000s); };
        return s;
    }
};

struct DeltaLog {
    std::vector<std::vector<FlowDelta>> rounds;
    std::vector<std::chrono::system_clock::time_point> times;
    void attach(NetworkMonitor& monitor)
    {
        monitor.setOnFlowDeltas([this](const std::vector<FlowDelta>& deltas, std::chrono::system_clock::time_point at) {
            rounds.push_back(deltas);
            times.push_back(at);
        });
    }
};

TEST(NetworkMonitorThroughput, FirstCycleIsABaselineThenDeltasBecomeRates)
{
    FakeNetwork net;
    NetworkMonitor monitor(net.sources());
    QSignalSpy historySpy(&monitor, &NetworkMonitor::historyChanged);
    QSignalSpy downSpy(&monitor, &NetworkMonitor::downloadRateChanged);

    net.interface = {1000, 500};
    monitor.runThroughputCycle();
    EXPECT_TRUE(monitor.history().isEmpty());
    EXPECT_EQ(historySpy.count(), 0);
    EXPECT_EQ(monitor.downloadRate(), 0);

    net.interface = {3048, 600};
    monitor.runThroughputCycle();
    ASSERT_EQ(monitor.history().size(), 1);
    EXPECT_EQ(monitor.history()[0], (NetworkHistoryPoint{0, 2048, 100}));
    EXPECT_EQ(monitor.downloadRate(), 2048);
    EXPECT_EQ(monitor.uploadRate(), 100);
    EXPECT_EQ(monitor.sessionDownload(), 2048u);
    EXPECT_EQ(monitor.sessionUpload(), 100u);

    // Same rates again: the rate properties stay quiet, the history still grows.
    net.interface = {5096, 700};
    monitor.runThroughputCycle();
    EXPECT_EQ(downSpy.count(), 1);
    EXPECT_EQ(historySpy.count(), 2);
    EXPECT_EQ(monitor.sessionDownload(), 4096u);
}

TEST(NetworkMonitorThroughput, CounterGoingBackwardsGivesZeroInThatDirectionOnly)
{
    FakeNetwork net;
    NetworkMonitor monitor(net.sources());
    net.interface = {4'000'000'000, 1000};
    monitor.runThroughputCycle();
    net.interface = {100, 1500};  // received counter wrapped
    monitor.runThroughputCycle();
    EXPECT_EQ(monitor.downloadRate(), 0);
    EXPECT_EQ(monitor.uploadRate(), 500);
    // The wrapped value is the new baseline.
    net.interface = {300, 1500};
    monitor.runThroughputCycle();
    EXPECT_EQ(monitor.downloadRate(), 200);
}

TEST(NetworkMonitorThroughput, HistoryKeepsTheNewestSixtyPoints)
{
    FakeNetwork net;
    NetworkMonitor monitor(net.sources());
    monitor.runThroughputCycle();
    for (int i = 1; i <= 61; ++i) {
        net.interface.inBytes += static_cast<std::uint64_t>(i);
        monitor.runThroughputCycle();
    }
    ASSERT_EQ(monitor.history().size(), 60);
    EXPECT_EQ(monitor.history().front().id, 1);
    EXPECT_EQ(monitor.history().front().download, 2);
    EXPECT_EQ(monitor.history().back().id, 60);
    EXPECT_EQ(monitor.history().back().download, 61);
}

TEST(NetworkMonitorThroughput, LoopSamplesAtOnceAndRestartsWithABaseline)
{
    FakeNetwork net;
    NetworkMonitor monitor(net.sources());
    net.interface = {100, 100};
    monitor.startThroughput();
    EXPECT_TRUE(monitor.isThroughputRunning());
    monitor.startThroughput();  // no second loop
    net.interface = {600, 100};
    ASSERT_TRUE(test::waitUntil([&] { return monitor.history().size() == 1; }, 3000));
    EXPECT_EQ(monitor.downloadRate(), 500);

    monitor.stopThroughput();
    EXPECT_FALSE(monitor.isThroughputRunning());
    // After a restart the first cycle only takes a new baseline: the stopped time is not
    // reported as one second of traffic.
    net.interface = {100'000, 100};
    monitor.startThroughput();
    EXPECT_EQ(monitor.history().size(), 1);
    EXPECT_EQ(monitor.downloadRate(), 500);
    EXPECT_EQ(monitor.sessionDownload(), 500u);
}

TEST(NetworkMonitorFlows, DeltasFlowFromTheSecondRoundAndFailedRoundsKeepTheBaseline)
{
    FakeNetwork net;
    net.names = {{"17.253.1.2", "apple.example"}};
    NetworkMonitor monitor(net.sources());
    DeltaLog log;
    log.attach(monitor);
    const auto at = std::chrono::system_clock::time_point(1'700'000'000s);
    const FlowKey safari{"Safari.812", "17.253.1.2"};

    monitor.processFlows({{safari, {100, 100}}}, at);
    EXPECT_TRUE(log.rounds.empty());
    monitor.processFlows({}, at + 2s);  // a failed sample
    monitor.processFlows({{safari, {400, 150}}}, at + 4s);
    ASSERT_EQ(log.rounds.size(), 1u);
    // Covers both intervals, and the name was not known yet when the delta was built.
    EXPECT_EQ(log.rounds[0], (std::vector<FlowDelta>{{"Safari", "17.253.1.2", "17.253.1.2", 300, 50}}));
    EXPECT_EQ(log.times[0], at + 4s);

    ASSERT_TRUE(test::waitUntil([&] { return monitor.hostNames().contains("17.253.1.2"); }));
    monitor.processFlows({{safari, {500, 150}}}, at + 6s);
    ASSERT_EQ(log.rounds.size(), 2u);
    EXPECT_EQ(log.rounds[1][0].host, "apple.example");

    // No growth: no callback at all.
    monitor.processFlows({{safari, {500, 150}}}, at + 8s);
    EXPECT_EQ(log.rounds.size(), 2u);
}

TEST(NetworkMonitorFlows, ReverseLookupsAreDeduplicatedAndFailuresCachedAsTheAddress)
{
    FakeNetwork net;
    net.names = {{"1.1.1.1", "one.one.one.one"}};
    NetworkMonitor monitor(net.sources());
    QSignalSpy resolved(&monitor, &NetworkMonitor::hostNameResolved);
    monitor.resolveHost("1.1.1.1");
    monitor.resolveHost("1.1.1.1");
    EXPECT_TRUE(monitor.isResolving("1.1.1.1"));
    monitor.resolveHost("192.0.2.9");
    monitor.resolveHost("");
    ASSERT_TRUE(test::waitUntil([&] { return resolved.count() == 2; }));
    EXPECT_EQ(net.lookups.load(), 2);
    EXPECT_EQ(monitor.hostNames().value("1.1.1.1"), "one.one.one.one");
    EXPECT_EQ(monitor.hostNames().value("192.0.2.9"), "192.0.2.9");
    EXPECT_FALSE(monitor.isResolving("1.1.1.1"));
    monitor.resolveHost("192.0.2.9");
    QTest::qWait(50);
    EXPECT_EQ(net.lookups.load(), 2) << "a cached address is never looked up again";
}

TEST(NetworkMonitorFlows, PerAppLoopSamplesOffTheMainThreadAndStopForgetsTheBaseline)
{
    FakeNetwork net;
    const FlowKey key{"curl.7", "1.1.1.1"};
    net.flowTables = {{{key, {0, 0}}}, {{key, {10, 1}}}, {{key, {30, 2}}}};
    NetworkMonitor monitor(net.sources());
    DeltaLog log;
    log.attach(monitor);
    monitor.setPerAppInterval(0.02);
    monitor.startPerApp();
    EXPECT_TRUE(monitor.isPerAppRunning());
    ASSERT_TRUE(test::waitUntil([&] { return log.rounds.size() >= 2; }));
    EXPECT_EQ(log.rounds[0][0].inBytes, 10u);
    EXPECT_EQ(log.rounds[1][0].inBytes, 20u);

    monitor.stopPerApp();
    EXPECT_FALSE(monitor.isPerAppRunning());
    const std::size_t roundsBefore = log.rounds.size();
    {
        std::lock_guard lock(net.mutex);
        net.flowTables = {{{key, {1000, 1000}}}};
    }
    // The first round after a restart only takes the baseline again.
    monitor.startPerApp();
    const int samplesAtRestart = net.flowSamples.load();
    ASSERT_TRUE(test::waitUntil([&] { return net.flowSamples.load() >= samplesAtRestart + 3; }));
    EXPECT_EQ(log.rounds.size(), roundsBefore);
}

TEST(NetworkMonitorFlows, IntervalChangeReachesTheRunningLoopAtItsNextSleep)
{
    FakeNetwork net;
    NetworkMonitor monitor(net.sources());
    monitor.setPerAppInterval(0.05);
    monitor.startPerApp();
    ASSERT_TRUE(test::waitUntil([&] { return net.flowSamples.load() == 1; }));
    // The sleep under way keeps its length; the one after it uses the new period.
    monitor.setPerAppInterval(3600);
    ASSERT_TRUE(test::waitUntil([&] { return net.flowSamples.load() == 2; }));
    QTest::qWait(300);
    EXPECT_EQ(net.flowSamples.load(), 2);
    EXPECT_TRUE(monitor.isPerAppRunning());
}

TEST(NetworkMonitorFlows, DestroyingTheMonitorWithSampleAndLookupInFlightIsSafe)
{
    auto release = std::make_shared<std::atomic<bool>>(false);
    NetworkMonitorSources sources;
    sources.interfaceBytes = [] { return ByteCounts{}; };
    sources.flows = [release] {
        while (!*release)
            std::this_thread::sleep_for(1ms);
        return FlowTable{{FlowKey{"a.1", "1.2.3.4"}, {1, 1}}};
    };
    sources.reverseLookup = [release](const QString&) {
        while (!*release)
            std::this_thread::sleep_for(1ms);
        return std::optional<QString>("late.example");
    };
    auto monitor = std::make_unique<NetworkMonitor>(sources);
    monitor->startPerApp();
    monitor->resolveHost("1.2.3.4");
    monitor.reset();
    *release = true;
    QTest::qWait(50);
}

} // namespace
} // namespace tallowmere
