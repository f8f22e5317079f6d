#include "history/NetworkHistoryViewModel.h"

#include "core/AppSettings.h"
#include "core/PreferencesStore.h"
#include "tests/history/HistoryTestSupport.h"

#include <QSignalSpy>
#include <QTest>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

constexpr std::int64_t kNow = 1'700'000'000;

class NetworkHistoryViewModelTest : public ::testing::Test {
protected:
    // Reloads and waits for both answers.
    void reloadAndWait()
    {
        QSignalSpy buckets(&model, &NetworkHistoryViewModel::bucketsChanged);
        QSignalSpy apps(&model, &NetworkHistoryViewModel::appsChanged);
        model.reload();
        ASSERT_TRUE(test::waitUntil([&] { return buckets.count() == 1 && apps.count() == 1; }));
    }

    QTemporaryDir dir;
    PreferencesStore preferences{dir.filePath("preferences.json")};
    AppSettings settings{preferences};
    NetworkUsageStore store{dir.path(), test::stoppedClock(kNow)};
    NetworkHistoryViewModel model{store, settings, test::stoppedClock(kNow)};
};

TEST_F(NetworkHistoryViewModelTest, NoticesTotalsAndPeakFollowTheSeriesAndTheSwitch)
{
    settings.setNetworkRecordingEnabled(false);
    reloadAndWait();
    EXPECT_FALSE(model.hasData());
    EXPECT_TRUE(model.peakLabel().isEmpty());
    EXPECT_EQ(model.emptyNotice(), "No recorded activity in this range yet.");
    EXPECT_EQ(model.recordingNotice(),
              QStringLiteral("Background recording is off \u2014 history only accumulates while recording is enabled in Settings."));

    QSignalSpy noticeSpy(&model, &NetworkHistoryViewModel::recordingNoticeChanged);
    settings.setNetworkRecordingEnabled(true);
    EXPECT_EQ(noticeSpy.count(), 1);
    EXPECT_TRUE(model.recordingNotice().isEmpty());

    store.record({{"a", "1.1.1.1", "1.1.1.1", 1000, 24}}, fromUnixSeconds(kNow - 600));
    store.record({{"b", "2.2.2.2", "2.2.2.2", 1024 * 1024, 512 * 1024}}, fromUnixSeconds(kNow - 60));
    reloadAndWait();
    EXPECT_TRUE(model.hasData());
    EXPECT_TRUE(model.emptyNotice().isEmpty());
    EXPECT_EQ(std::pair(model.totalIn(), model.totalOut()), (std::pair<std::uint64_t, std::uint64_t>(1000 + 1024 * 1024, 24 + 512 * 1024)));
    EXPECT_EQ(model.peakLabel(), "Peak 1.5 MB") << "the busiest bucket, both directions";
}

TEST_F(NetworkHistoryViewModelTest, ListsTheTenBusiestAppsAndKeepsExpandedAcrossReloads)
{
    for (int i = 1; i <= 15; ++i)
        store.record({{QStringLiteral("app%1").arg(i), "10.0.0.1", "10.0.0.1", static_cast<std::uint64_t>(i * 10), 0}},
                     fromUnixSeconds(kNow - 120));
    store.record({{"browser", "10.1.0.1", "h", 1000, 1}, {"browser", "10.1.0.2", "h", 1000, 1}}, fromUnixSeconds(kNow - 60));
    reloadAndWait();
    ASSERT_EQ(model.apps().size(), 10u);
    EXPECT_EQ(model.apps()[0].name, "browser");
    EXPECT_EQ(model.apps()[1].name, "app15");
    EXPECT_EQ(model.apps()[9].name, "app7");

    QSignalSpy expandedSpy(&model, &NetworkHistoryViewModel::expandedChanged);
    model.toggleExpanded("browser");
    model.toggleExpanded("app15");
    model.toggleExpanded("app15");
    EXPECT_EQ(expandedSpy.count(), 3);
    EXPECT_TRUE(model.isExpanded("browser"));
    EXPECT_FALSE(model.isExpanded("app15"));
    reloadAndWait();
    EXPECT_TRUE(model.isExpanded("browser"));
}

TEST_F(NetworkHistoryViewModelTest, ShownCardLoadsAtOnceAndReloadsWhenTheRangeChanges)
{
    store.record({{"old", "1.1.1.1", "1.1.1.1", 5, 5}}, fromUnixSeconds(kNow - 10 * 86400));
    QSignalSpy buckets(&model, &NetworkHistoryViewModel::bucketsChanged);
    QSignalSpy rangeSpy(&model, &NetworkHistoryViewModel::rangeChanged);
    model.setShown(true);
    ASSERT_TRUE(test::waitUntil([&] { return buckets.count() == 1; }));
    EXPECT_FALSE(model.hasData()) << "ten days back is outside the hour";

    model.setRange(HistoryRange::month);
    EXPECT_EQ(rangeSpy.count(), 1);
    ASSERT_TRUE(test::waitUntil([&] { return buckets.count() == 2; }));
    ASSERT_EQ(model.buckets().size(), 61u);
    EXPECT_EQ(model.buckets().front().id, (kNow - 2592000) / 43200 * 43200);
    EXPECT_TRUE(model.hasData());
    ASSERT_TRUE(test::waitUntil([&] { return model.apps().size() == 1; }));

    model.setRange(HistoryRange::month);
    EXPECT_EQ(rangeSpy.count(), 1);
    model.setShown(false);
    model.setRange(HistoryRange::week);
    QTest::qWait(50);
    EXPECT_EQ(buckets.count(), 2) << "a hidden card sends no queries";
}

} // namespace
} // namespace tallowmere
