#include "monitors/NetworkMonitor.h"

#include "tests/support/TestSupport.h"

#include <QSignalSpy>
#include <QTest>

#include <atomic>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using namespace std::chrono_literals;
const auto kAt = std::chrono::system_clock::time_point(1'700'000'000s);

FlowSample deltas(FlowTable table, ByteCounts unattributed = {})
{
    return FlowSample{std::move(table), unattributed};
}

// Sources the test controls: interface counters it sets, flow samples handed out in order (the
// last repeats; a new list starts over), and a lookup answering from a table.
struct FakeNetwork {
    ByteCounts interface;
    // Shared with samples still in flight when a test ends.
    struct FlowScript {
        std::mutex mutex;
        std::vector<std::optional<FlowSample>> samples;
        std::atomic<int> taken{0};
        std::atomic<int> restarts{0};
    };
    std::shared_ptr<FlowScript> flows = std::make_shared<FlowScript>();
    std::atomic<int> lookups{0};
    QHash<QString, QString> names;
    std::vector<std::vector<FlowDelta>> rounds;  // what the monitor reported, on the main thread

    NetworkMonitorSources sources()
    {
        return {.interfaceBytes = [this] { return interface; },
                .flows = [script = flows] {
                    std::lock_guard lock(script->mutex);
                    return script->samples.at(std::min<std::size_t>(script->taken++, script->samples.size() - 1));
                },
                .reverseLookup = [this](const QString& ip) {
                    ++lookups;
                    return names.contains(ip) ? std::optional(names.value(ip)) : std::nullopt;
                },
                .restartFlows = [script = flows] { ++script->restarts; }};
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

TEST(NetworkMonitorFlows, RoundsReportPerAppDeltasCountUnattributedBytesAndNamesFollow)
{
    FakeNetwork net;
    net.names = {{"203.0.113.7", "mirror.example.org"}};
    NetworkMonitor monitor(net.sources());
    net.collectDeltas(monitor);
    auto& rounds = net.rounds;
    const FlowKey firefox{"firefox-esr.812", "203.0.113.7"};

    monitor.processFlows(deltas({}, {7, 3}), kAt);
    EXPECT_TRUE(rounds.empty()) << "a round without traffic makes no call";
    monitor.processFlows(deltas({{firefox, {300, 50}}}, {1, 0}), kAt + 2s);
    ASSERT_EQ(rounds.size(), 1u);
    // The name was not known yet when the delta was built.
    EXPECT_EQ(rounds[0], (std::vector<FlowDelta>{{"firefox-esr", "203.0.113.7", "203.0.113.7", 300, 50}}));
    EXPECT_EQ(monitor.unattributedBytes(), 11u);

    ASSERT_TRUE(test::waitUntil([&] { return monitor.hostNames().contains("203.0.113.7"); }));
    monitor.processFlows(deltas({{firefox, {100, 0}}}), kAt + 6s);
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
    monitor.resolveHost("192.0.2.9");
    QTest::qWait(50);
    EXPECT_EQ(net.lookups.load(), 2);
}

TEST(NetworkMonitorFlows, LoopSamplesOffTheMainThreadSkipsFailedSamplesAndRestartsTheSource)
{
    FakeNetwork net;
    const FlowKey key{"curl.7", "1.1.1.1"};
    net.flows->samples = {deltas({{key, {10, 1}}}), std::nullopt, deltas({{key, {20, 1}}}), deltas({})};
    NetworkMonitor monitor(net.sources());
    net.collectDeltas(monitor);
    auto& rounds = net.rounds;
    monitor.setPerAppInterval(0.02);
    monitor.startPerApp();
    monitor.startPerApp();
    EXPECT_EQ(net.flows->restarts.load(), 1) << "starting a running loop takes no new baseline";
    ASSERT_TRUE(test::waitUntil([&] { return net.flows->taken.load() >= 4; }));
    ASSERT_EQ(rounds.size(), 2u) << "the failed sample and the one without traffic report nothing";
    EXPECT_EQ(rounds[0][0].inBytes, 10u);
    EXPECT_EQ(rounds[1][0].inBytes, 20u);
    monitor.stopPerApp();
    monitor.startPerApp();
    EXPECT_EQ(net.flows->restarts.load(), 2);
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
        .flows = [held] { return held(std::optional(deltas({{FlowKey{"a.1", "1.2.3.4"}, {1, 1}}}))); },
        .reverseLookup = [held](const QString&) { return held(std::optional<QString>("late.example")); }};
    auto monitor = std::make_unique<NetworkMonitor>(sources);
    monitor->startPerApp();
    monitor->resolveHost("1.2.3.4");
    monitor.reset();
    *release = true;
    QTest::qWait(50);
}

} // namespace
} // namespace tallowmere
