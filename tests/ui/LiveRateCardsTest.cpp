#include "history/NetworkMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "tests/ui/WindowTestKit.h"
#include "ui/components/RateHistoryGraph.h"
#include "ui/live/DiskRateFormat.h"
#include "ui/live/LiveRateCard.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using namespace std::chrono_literals;
constexpr double KB = 1024;

TEST(DiskRateFormat, KeepsOneDecimalBelowAHundredAndNoneForBytes)
{
    const std::pair<double, const char*> cases[] = {
        {-3, "0 B/s"},
        {0, "0 B/s"},
        {1023, "1023 B/s"},
        {1024, "1.0 KB/s"},
        {99.9 * KB, "99.9 KB/s"},
        {100 * KB, "100 KB/s"},
        {1536 * KB, "1.5 MB/s"},
        {250 * KB * KB, "250 MB/s"},
        // GB/s is the largest unit.
        {3000 * KB * KB * KB, "3000 GB/s"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(formatDiskRate(value), QString::fromLatin1(text)) << value;
}

// The rate cards sample once a second on the kit's scheduler and clock.
struct LivePageHarness : test::LivePageKit {
    std::chrono::system_clock::time_point now{std::chrono::seconds(1'700'000'000)};

    LiveRateCard* card() const { return page->findChild<LiveRateCard*>(); }
    void tick()
    {
        now += 1s;
        scheduler->advance(1s);
    }
};

TEST(DiskLiveCard, SamplesOnlyWhileShownAndShowsRatesPeakAndGraph)
{
    LivePageHarness h;
    DiskCounters counters{0, 0};
    DiskMonitoringService disk(std::make_unique<DiskMonitor>(
        DiskSources{[] { return VolumeCapacity{100ull << 30, 50ull << 30}; }, [&] { return counters; }, [&] { return h.now; }},
        h.scheduler));
    WindowServices services = h.kit.services();
    services.disk = &disk;
    h.build(SpecCategory::storage, services);

    ASSERT_NE(h.card(), nullptr);
    EXPECT_FALSE(disk.pageActive()) << "a page behind another samples nothing";
    EXPECT_TRUE(disk.monitor().history().isEmpty());

    h.stack->setCurrentWidget(h.page);
    EXPECT_TRUE(disk.pageActive());
    EXPECT_TRUE(h.card()->graph()->isCollecting());
    counters = {static_cast<std::uint64_t>(99.9 * KB), 100 * 1024};
    h.tick();
    counters = {counters.read + 512, counters.write + 2048};
    h.tick();
    EXPECT_EQ(h.card()->firstRate(), QStringLiteral("512 B/s"));
    EXPECT_EQ(h.card()->secondRate(), QStringLiteral("2.0 KB/s"));
    EXPECT_EQ(h.card()->findChild<QLabel*>(QStringLiteral("note.upper"))->text(), QStringLiteral("peak 100 KB/s"));
    EXPECT_FALSE(h.card()->graph()->isCollecting());
    EXPECT_EQ(h.card()->graph()->first().size(), 2);

    h.stack->setCurrentWidget(h.other);
    EXPECT_FALSE(disk.pageActive());
    h.tick();
    EXPECT_EQ(disk.monitor().history().size(), 2) << "no sampling once the page is gone";
}

TEST(NetworkLiveCard, ShowsRatesSessionAndPeakInTheByteFormat)
{
    LivePageHarness h;
    ByteCounts counters{};
    auto monitor = std::make_unique<NetworkMonitor>(
        NetworkMonitorSources{.interfaceBytes = [&] { return counters; },
                              .flows = [] { return std::optional<FlowSample>(); },
                              .reverseLookup = [](const QString&) { return std::optional<QString>(); },
                              .clock = [&] { return h.now; },
                              .restartFlows = [] {}},
        h.scheduler);
    NetworkMonitoringService network(std::make_unique<NetworkUsageStore>(h.kit.dir.path()), std::move(monitor));
    WindowServices services = h.kit.services();
    services.network = &network;
    h.build(SpecCategory::network, services);
    h.stack->setCurrentWidget(h.page);
    ASSERT_TRUE(network.pageActive());

    counters = {10 * 1024, static_cast<std::uint64_t>(9.9 * KB)};
    h.tick();
    LiveRateCard* card = h.card();
    EXPECT_EQ(card->firstRate(), QStringLiteral("10 KB/s"));
    EXPECT_EQ(card->secondRate(), QStringLiteral("9.9 KB/s"));
    EXPECT_EQ(card->findChild<QLabel*>(QStringLiteral("note.upper"))->text(), QStringLiteral("Peak 10 KB/s"));
    EXPECT_EQ(card->findChild<QLabel*>(QStringLiteral("note.lower"))->text(), QStringLiteral("Session 10 KB / 9.9 KB"));
    EXPECT_DOUBLE_EQ(card->graph()->scale(), 10 * KB) << "both series share the busiest sample's scale";

    h.window.hide();
    EXPECT_FALSE(network.pageActive());
}

} // namespace
} // namespace tallowmere
