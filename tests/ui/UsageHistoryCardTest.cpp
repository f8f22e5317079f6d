#include "core/AppSettings.h"
#include "core/PreferencesStore.h"
#include "history/NetworkUsageStore.h"
#include "tests/support/TestSupport.h"
#include "ui/components/UsageBarGraph.h"
#include "ui/live/UsageHistoryCard.h"
#include "ui/live/UsageHistoryRow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

constexpr std::int64_t kNow = 1'700'000'000;
constexpr std::uint64_t MB = 1024 * 1024;

WallClock stopped()
{
    return [] { return fromUnixSeconds(kNow); };
}

TEST(UsageBarGraph, StacksOutOnInAndScalesThePeakToTheFullHeight)
{
    const QList<UsageBarGeometry> parts = usageBarGeometry({{100, 0}, {50, 50}, {0, 25}, {0, 0}}, QSizeF(400, 100));
    ASSERT_EQ(parts.size(), 4);
    EXPECT_DOUBLE_EQ(parts[0].in.top(), 0);
    EXPECT_DOUBLE_EQ(parts[0].in.bottom(), 100);
    EXPECT_DOUBLE_EQ(parts[1].in.height(), 50);
    EXPECT_DOUBLE_EQ(parts[1].out.bottom(), parts[1].in.top()) << "upload sits on download";
    EXPECT_DOUBLE_EQ(parts[1].out.top(), 0);
    EXPECT_DOUBLE_EQ(parts[2].out.height(), 25);
    EXPECT_LT(parts[0].in.right(), parts[1].in.left()) << "oldest on the left, a gap between bars";
    EXPECT_TRUE(usageBarGeometry({{0, 0}, {0, 0}}, QSizeF(400, 100)).isEmpty()) << "no traffic draws nothing";
    EXPECT_TRUE(usageBarGeometry({}, QSizeF(400, 100)).isEmpty());
}

class UsageHistoryCardTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        stack.addWidget(new QWidget);
        stack.addWidget(card);
        stack.setCurrentWidget(card);
        stack.resize(720, 900);
    }

    // Shows the card and waits until both of the store's answers for `range` are on screen.
    void showAndLoad()
    {
        QSignalSpy buckets(&card->model(), &NetworkHistoryViewModel::bucketsChanged);
        QSignalSpy apps(&card->model(), &NetworkHistoryViewModel::appsChanged);
        stack.show();
        ASSERT_TRUE(test::waitUntil([&] { return !buckets.isEmpty() && !apps.isEmpty(); }));
    }

    QTemporaryDir dir;
    PreferencesStore preferences{dir.filePath(QStringLiteral("preferences.json"))};
    AppSettings settings{preferences};
    NetworkUsageStore store{dir.path(), stopped()};
    QStackedWidget stack;
    UsageHistoryCard* card = new UsageHistoryCard(Theme::darkTheme(), Qt::green, store, settings, stopped());
};

TEST_F(UsageHistoryCardTest, ShowsTotalsPeakAndTheBusiestAppsWithTheirEndpoints)
{
    std::vector<FlowDelta> browser;
    for (int i = 0; i < 20; ++i)
        browser.push_back({QStringLiteral("browser"), QStringLiteral("10.0.0.%1").arg(i), QStringLiteral("host%1.example").arg(i),
                           (20 - i) * MB, 0});
    store.record(browser, fromUnixSeconds(kNow - 120));
    store.record({{QStringLiteral("mail"), QStringLiteral("10.1.0.1"), QStringLiteral("10.1.0.1"), 0, 3 * MB}},
                 fromUnixSeconds(kNow - 60));
    showAndLoad();

    EXPECT_EQ(card->downloadedText(), QStringLiteral("210 MB"));
    EXPECT_EQ(card->uploadedText(), QStringLiteral("3.0 MB"));
    EXPECT_EQ(card->graph()->bars().size(), 61);
    EXPECT_EQ(card->graph()->label(), QStringLiteral("Peak 210 MB"));
    EXPECT_TRUE(card->emptyNoticeText().isEmpty());

    QList<UsageHistoryRow*> rows = card->rows();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0]->name(), QStringLiteral("browser"));
    EXPECT_EQ(rows[0]->download(), QStringLiteral("210 MB"));
    EXPECT_EQ(rows[1]->upload(), QStringLiteral("3.0 MB"));

    rows[0]->click();
    QApplication::processEvents();
    rows = card->rows();
    ASSERT_EQ(rows.size(), 1 + 12 + 1) << "an opened app lists its twelve busiest endpoints";
    EXPECT_TRUE(rows[0]->isExpanded());
    EXPECT_EQ(rows[1]->kind(), UsageHistoryRow::Kind::endpoint);
    EXPECT_EQ(rows[1]->name(), QStringLiteral("host0.example"));
    EXPECT_EQ(rows[1]->download(), QStringLiteral("20 MB"));
    EXPECT_EQ(rows[13]->name(), QStringLiteral("mail"));

    // Still open after a reload.
    card->model().reload();
    ASSERT_TRUE(test::waitUntil([&] { return card->rows().size() == 14; }));
    card->rows()[0]->click();
    QApplication::processEvents();
    EXPECT_EQ(card->rows().size(), 2);
}

TEST_F(UsageHistoryCardTest, RangeButtonsReloadTheSeriesAtTheirWidth)
{
    store.record({{QStringLiteral("backup"), QStringLiteral("10.0.0.9"), QStringLiteral("nas"), 0, 7 * MB}},
                 fromUnixSeconds(kNow - 20 * 86400));
    showAndLoad();
    EXPECT_TRUE(card->rangeButton(HistoryRange::hour)->isChecked());
    EXPECT_EQ(card->emptyNoticeText(), QStringLiteral("No recorded activity in this range yet."));
    EXPECT_FALSE(card->graph()->isVisible());
    EXPECT_TRUE(card->rows().isEmpty());

    card->rangeButton(HistoryRange::month)->click();
    ASSERT_TRUE(test::waitUntil([&] { return card->graph()->bars().size() == 61 && card->rows().size() == 1; }));
    EXPECT_FALSE(card->rangeButton(HistoryRange::hour)->isChecked());
    EXPECT_EQ(card->uploadedText(), QStringLiteral("7.0 MB"));
    EXPECT_TRUE(card->graph()->isVisible());
    EXPECT_TRUE(card->emptyNoticeText().isEmpty());

    card->rangeButton(HistoryRange::week)->click();
    ASSERT_TRUE(test::waitUntil([&] { return card->graph()->bars().size() == 57; }));
}

TEST_F(UsageHistoryCardTest, RecordingOffAndNoDataShowBothNotices)
{
    settings.setNetworkRecordingEnabled(false);
    showAndLoad();
    EXPECT_EQ(card->recordingNoticeText().toStdString(),
              "Background recording is off \u2014 history only accumulates while recording is enabled in Settings.");
    EXPECT_EQ(card->emptyNoticeText(), QStringLiteral("No recorded activity in this range yet."));
    settings.setNetworkRecordingEnabled(true);
    EXPECT_TRUE(card->recordingNoticeText().isEmpty());
}

TEST_F(UsageHistoryCardTest, RefreshesOnlyWhileOnScreen)
{
    EXPECT_FALSE(card->model().isShown()) << "nothing loads before the card is shown";
    showAndLoad();
    EXPECT_TRUE(card->model().isShown());
    stack.setCurrentIndex(0);
    EXPECT_FALSE(card->model().isShown());
    stack.setCurrentWidget(card);
    EXPECT_TRUE(card->model().isShown());
    stack.hide();
    EXPECT_FALSE(card->model().isShown());
}

} // namespace
} // namespace tallowmere
