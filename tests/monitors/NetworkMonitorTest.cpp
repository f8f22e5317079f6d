#include "monitors/NetworkMonitor.h"

#include "tests/support/ManualScheduler.h"
#include "tests/support/TestSupport.h"

#include <QSignalSpy>

#include <atomic>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using namespace std::chrono_literals;
const auto kAt = std::chrono::system_clock::time_point(1'700'000'000s);

// Sources the test controls: interface counters it sets, flow tables handed out in order (the
// last repeats; a new list starts over), and a lookup answering from a table.
struct FakeNetwork {
    ByteCounts interface;
    std::mutex mutex;
    std::vector<FlowTable> flowTables;
    std::atomic<int> flowSamples{0};
    std::atomic<int> lookups{0};
    QHash<QString, QString> names;
    std::vector<std::vector<FlowDelta>> rounds;  // what the monitor reported, on the main thread

    NetworkMonitorSources sources()
    {
        return {.interfaceBytes = [this] { return interface; },
                .flows = [this] {
                    std::lock_guard lock(mutex);
                    return flowTables.at(std::min<std::size_t>(flowSamples++, flowTables.size() - 1));
                },
                .reverseLookup = [this](const QString& ip) {
                    ++lookups;
                    return names.contains(ip) ? std::optional(names.value(ip)) : std::nullopt;
                }};
    }

    void collectDeltas(NetworkMonitor& monitor)
    {
        monitor.setOnFlowDeltas([this](const std::vector<FlowDelta>& deltas, auto) { rounds.push_back(deltas); });
    }
};

TEST(NetworkMonitorThroughput, BaselineRatesWrapAndHistoryLimit)
{
    FakeNetwork net;
    NetworkMonitor monitor(net.sources());
    QSignalSpy downSpy(&monitor, &NetworkMonitor::downloadRateChanged);
    net.interface = {1000, 500};
    monitor.runThroughputCycle();
    EXPECT_TRUE(monitor.history().isEmpty()) << "the first cycle only takes the baseline";

    net.interface = {3048, 600};
    monitor.runThroughputCycle();
    ASSERT_EQ(monitor.history().size(), 1);
    EXPECT_EQ(monitor.history()[0], (NetworkHistoryPoint{0, 2048, 100}));
    EXPECT_EQ(monitor.sessionDownload(), 2048u);

    net.interface = {100, 700};  // the received counter went backwards
    monitor.runThroughputCycle();
    EXPECT_EQ(monitor.downloadRate(), 0);
    EXPECT_EQ(monitor.uploadRate(), 100);
    EXPECT_EQ(monitor.sessionDownload(), 2048u);
    EXPECT_EQ(downSpy.count(), 2);

    for (int i = 0; i < 60; ++i) {
        net.interface.inBytes += 5;
        monitor.runThroughputCycle();
    }
    ASSERT_EQ(monitor.history().size(), 60);
    EXPECT_EQ(monitor.history().front().id, 2);
    EXPECT_EQ(monitor.history().back().id, 61);

    // A restart begins with a new baseline: the stopped time is not one second of traffic.
    monitor.stopThroughput();
    net.interface.inBytes += 1'000'000;
    monitor.startThroughput();
    EXPECT_EQ(monitor.downloadRate(), 5);
    EXPECT_EQ(monitor.history().back().id, 61);
}

TEST(NetworkMonitorFlows, DeltasFromTheSecondRoundFailedRoundsKeepTheBaselineNamesFollow)
{
    FakeNetwork net;
    net.names = {{"203.0.113.7", "mirror.example.org"}};
    NetworkMonitor monitor(net.sources());
    net.collectDeltas(monitor);
    auto& rounds = net.rounds;
    const FlowKey firefox{"firefox-esr.812", "203.0.113.7"};

    monitor.processFlows({{firefox, {100, 100}}}, kAt);
    EXPECT_TRUE(rounds.empty());
    monitor.processFlows({}, kAt + 2s);  // a failed sample
    monitor.processFlows({{firefox, {400, 150}}}, kAt + 4s);
    ASSERT_EQ(rounds.size(), 1u);
    // Covers both intervals; the name was not known yet when the delta was built.
    EXPECT_EQ(rounds[0], (std::vector<FlowDelta>{{"firefox-esr", "203.0.113.7", "203.0.113.7", 300, 50}}));

    ASSERT_TRUE(test::waitUntil([&] { return monitor.hostNames().contains("203.0.113.7"); }));
    monitor.processFlows({{firefox, {500, 150}}}, kAt + 6s);
    monitor.processFlows({{firefox, {500, 150}}}, kAt + 8s);  // no growth, no callback
    ASSERT_EQ(rounds.size(), 2u);
    EXPECT_EQ(rounds[1][0].host, "mirror.example.org");
}

TEST(NetworkMonitorFlows, ReverseLookupsAreDeduplicatedAndFailuresCachedAsTheAddress)
{
    FakeNetwork net;
    net.names = {{"1.1.1.1", "one.one.one.one"}};
    NetworkMonitor monitor(net.sources());
    QSignalSpy resolved(&monitor, &NetworkMonitor::hostNameResolved);
    for (const char* ip : {"1.1.1.1", "1.1.1.1", "192.0.2.9", ""})
        monitor.resolveHost(ip);
    ASSERT_TRUE(test::waitUntil([&] { return resolved.count() == 2; }));
    EXPECT_EQ(monitor.hostNames().value("1.1.1.1"), "one.one.one.one");
    EXPECT_EQ(monitor.hostNames().value("192.0.2.9"), "192.0.2.9");
    // Known now: asked again, it is not looked up; the next new address is.
    monitor.resolveHost("192.0.2.9");
    monitor.resolveHost("192.0.2.10");
    ASSERT_TRUE(test::waitUntil([&] { return resolved.count() == 3; }));
    EXPECT_EQ(net.lookups.load(), 3);
}

TEST(NetworkMonitorFlows, LoopSamplesOffTheMainThreadAndARestartTakesANewBaseline)
{
    FakeNetwork net;
    const FlowKey key{"curl.7", "1.1.1.1"};
    net.flowTables = {{{key, {0, 0}}}, {{key, {10, 1}}}, {{key, {30, 2}}}};
    auto scheduler = std::make_shared<test::ManualScheduler>();
    NetworkMonitor monitor(net.sources(), scheduler);
    net.collectDeltas(monitor);
    auto& rounds = net.rounds;
    monitor.setPerAppInterval(2.0);
    monitor.startPerApp();
    test::finishDetachedWork();
    EXPECT_EQ(net.flowSamples.load(), 1);
    for (int round = 0; round < 2; ++round) {
        scheduler->advance(1999ms);
        EXPECT_EQ(net.flowSamples.load(), 1 + round);
        scheduler->advance(1ms);
        test::finishDetachedWork();
    }
    ASSERT_EQ(rounds.size(), 2u);
    EXPECT_EQ(rounds[0][0].inBytes, 10u);
    EXPECT_EQ(rounds[1][0].inBytes, 20u);

    monitor.stopPerApp();
    EXPECT_EQ(scheduler->pending(), 0u);
    net.flowTables = {{{key, {1000, 1000}}}};
    net.flowSamples = 0;
    monitor.startPerApp();
    test::finishDetachedWork();
    for (int round = 0; round < 2; ++round) {
        scheduler->advance(2s);
        test::finishDetachedWork();
    }
    EXPECT_EQ(net.flowSamples.load(), 3);
    EXPECT_EQ(rounds.size(), 2u) << "the first round after a restart is a baseline again";
}

TEST(NetworkMonitorFlows, DestroyingTheMonitorWithSampleAndLookupInFlightIsSafe)
{
    auto release = std::make_shared<std::atomic<bool>>(false);
    auto held = [release]<class T>(T value) {
        while (!*release)
            std::this_thread::sleep_for(1ms);
        return value;
    };
    const NetworkMonitorSources sources{
        .interfaceBytes = [] { return ByteCounts{}; },
        .flows = [held] { return held(FlowTable{{FlowKey{"a.1", "1.2.3.4"}, {1, 1}}}); },
        .reverseLookup = [held](const QString&) { return held(std::optional<QString>("late.example")); }};
    auto monitor = std::make_unique<NetworkMonitor>(sources);
    monitor->startPerApp();
    monitor->resolveHost("1.2.3.4");
    monitor.reset();
    *release = true;
    test::finishDetachedWork();
}

} // namespace
} // namespace tallowmere
