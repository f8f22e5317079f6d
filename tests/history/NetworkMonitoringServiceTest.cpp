#include "history/NetworkMonitoringService.h"

#include "tests/history/HistoryTestSupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// A service over a store in a temporary folder and a monitor whose source reports 1000 bytes in
// each direction per sample on one connection, after a first baseline sample.
class NetworkMonitoringServiceTest : public ::testing::Test {
protected:
    NetworkMonitoringServiceTest()
    {
        NetworkMonitorSources sources{
            .interfaceBytes = [this] { return ByteCounts{static_cast<std::uint64_t>(++interfaceReads) * 100, 0}; },
            .flows = [samples = samples] {
                if (++*samples == 1)
                    return std::optional(FlowSample{});
                return std::optional(FlowSample{{{FlowKey{"curl.42", "192.0.2.7"}, {1000, 1000}}}});
            },
            .reverseLookup = [](const QString&) { return std::optional<QString>(); }};
        service = std::make_unique<NetworkMonitoringService>(std::make_unique<NetworkUsageStore>(dir.path()),
                                                             std::make_unique<NetworkMonitor>(sources));
    }

    std::int64_t storedIn()
    {
        service->usageStore().waitForIdle();
        return test::scalar(service->usageStore().databasePath(), "SELECT coalesce(sum(bytes_in), 0) FROM endpoint_usage");
    }

    void set(bool page, bool menuBar, bool server, bool recording)
    {
        service->setPageActive(page);
        service->setMenuBarActive(menuBar);
        service->setServerActive(server);
        service->setRecordingActive(recording);
        service->updateMonitoring();
    }

    QTemporaryDir dir;
    int interfaceReads = 0;
    std::shared_ptr<std::atomic<int>> samples = std::make_shared<std::atomic<int>>(0);
    std::unique_ptr<NetworkMonitoringService> service;
};

TEST_F(NetworkMonitoringServiceTest, MenuBarOrServerRunThroughputOnly)
{
    set(false, false, true, false);
    EXPECT_TRUE(service->isActive() && service->monitor().isThroughputRunning());
    EXPECT_FALSE(service->monitor().isPerAppRunning());
    ASSERT_TRUE(test::waitUntil([&] { return service->monitor().history().size() >= 1; }, 3000));
    EXPECT_EQ(samples->load(), 0) << "the per-app source is never asked";

    set(false, true, false, false);
    EXPECT_TRUE(service->monitor().isThroughputRunning());
    // The same flags again change nothing: a restarted loop would sample at once.
    QSignalSpy menuSpy(service.get(), &MonitoringService::menuBarActiveChanged);
    const int reads = interfaceReads;
    set(false, true, false, false);
    EXPECT_EQ(menuSpy.count(), 0);
    EXPECT_EQ(interfaceReads, reads);
    set(false, false, false, false);
    EXPECT_FALSE(service->isActive() || service->monitor().isThroughputRunning() || service->monitor().isPerAppRunning());
}

TEST_F(NetworkMonitoringServiceTest, RecordingAloneSamplesAndStores)
{
    QSignalSpy recordingSpy(service.get(), &NetworkMonitoringService::recordingActiveChanged);
    set(false, false, false, true);
    EXPECT_EQ(recordingSpy.count(), 1);
    EXPECT_TRUE(service->monitor().isThroughputRunning() && service->monitor().isPerAppRunning());
    // Shorten the wait only for the test; the service leaves the value alone while it fits.
    service->monitor().setPerAppInterval(0.02);
    // A sample starts only after the previous one was applied: four started, three applied.
    ASSERT_TRUE(test::waitUntil([&] { return samples->load() >= 4; }));
    // The page keeps the loop going at its own period, but nothing more is stored.
    set(true, false, false, false);
    EXPECT_TRUE(service->monitor().isPerAppRunning());
    EXPECT_EQ(service->monitor().perAppInterval(), NetworkMonitoringService::kPageInterval);
    service->monitor().setPerAppInterval(0.02);
    const int sampled = samples->load();
    // The first sample is the baseline; each later one applied stored 1000 bytes (a sample
    // still in flight when recording stopped is dropped).
    const std::int64_t stored = storedIn();
    EXPECT_TRUE(stored % 1000 == 0 && stored >= 2000 && stored <= (sampled - 1) * 1000) << stored << " of " << sampled;
    ASSERT_TRUE(test::waitUntil([&] { return samples->load() >= sampled + 3; }));
    EXPECT_EQ(storedIn(), stored);
}

TEST_F(NetworkMonitoringServiceTest, PagePeriodFollowsWhoIsWatchingWithoutRestartingTheLoop)
{
    set(false, false, false, true);
    ASSERT_TRUE(service->monitor().isPerAppRunning());
    EXPECT_EQ(service->monitor().refreshInterval(), NetworkMonitoringService::kRecordingRefresh);
    set(true, false, false, true);
    EXPECT_EQ(service->monitor().perAppInterval(), NetworkMonitoringService::kRecordingInterval)
        << "recording keeps its shorter period while the page is shown";
    EXPECT_EQ(service->monitor().refreshInterval(), NetworkMonitoringService::kPageInterval)
        << "the page gets every connection's figures at its own period";
    set(false, false, false, true);
    EXPECT_EQ(service->monitor().perAppInterval(), NetworkMonitoringService::kRecordingInterval);
    EXPECT_EQ(service->monitor().refreshInterval(), NetworkMonitoringService::kRecordingRefresh);
    // Only the first sample of the run was taken: no restart, so no second baseline sample.
    ASSERT_TRUE(test::waitUntil([&] { return samples->load() == 1; }));
    QTest::qWait(100);
    EXPECT_EQ(samples->load(), 1);
}

} // namespace
} // namespace tallowmere
