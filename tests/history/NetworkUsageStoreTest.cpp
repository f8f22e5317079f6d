#include "history/NetworkUsageStore.h"

#include "tests/history/HistoryTestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using test::scalar;

constexpr std::int64_t kNow = 1'700'000'000;
constexpr std::int64_t kNowMinute = kNow / 60 * 60;

class NetworkUsageStoreTest : public ::testing::Test {
protected:
    std::unique_ptr<NetworkUsageStore> makeStore() { return std::make_unique<NetworkUsageStore>(dir.path(), test::stoppedClock(kNow)); }
    QString path() const { return dir.filePath("network-usage.sqlite"); }
    static WallTime at(std::int64_t seconds) { return fromUnixSeconds(seconds); }

    QTemporaryDir dir;
};

TEST_F(NetworkUsageStoreTest, RecordsAddUpPerMinuteKeepResolvedNamesAndClampHugeCounts)
{
    auto store = makeStore();
    store->record({{"firefox-esr", "203.0.113.7", "203.0.113.7", 100, 10}, {"big", "9.9.9.9", "9.9.9.9", ~0ull, 3}},
                  at(kNowMinute + 5));
    store->record({{"firefox-esr", "203.0.113.7", "mirror.example.org", 50, 5}}, at(kNowMinute + 59));
    store->record({{"firefox-esr", "203.0.113.7", "203.0.113.7", 1, 1}}, at(kNowMinute + 60));
    store->waitForIdle();
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage"), 3);
    EXPECT_EQ(scalar(path(), "SELECT bytes_in FROM endpoint_usage WHERE app = 'firefox-esr' AND bucket = "
                             + std::to_string(kNowMinute)), 150);
    EXPECT_EQ(scalar(path(), "SELECT bytes_in FROM endpoint_usage WHERE app = 'big'"), std::numeric_limits<std::int64_t>::max());
    // An unresolved delta neither adds a name nor wipes the one stored; a new name replaces it.
    EXPECT_EQ(scalar<QString>(path(), "SELECT group_concat(ip || '=' || host) FROM hosts"), "203.0.113.7=mirror.example.org");
    store->record({{"firefox-esr", "203.0.113.7", "renamed.example", 1, 1}}, at(kNow));
    store->waitForIdle();
    EXPECT_EQ(scalar<QString>(path(), "SELECT group_concat(ip || '=' || host) FROM hosts"), "203.0.113.7=renamed.example");
}

TEST_F(NetworkUsageStoreTest, SeriesHasEveryBucketFromTheAlignedStartThroughNow)
{
    auto store = makeStore();
    auto series = [&](std::int64_t since, std::int64_t width) {
        return test::answerOf<std::vector<UsageBucket>>([&](auto done) { store->bucketSeries(at(since), width, done); });
    };
    EXPECT_EQ(series(kNow - 86400, 1800).size(), 49u) << "an empty range still has every bucket";
    store->record({{"a", "1.1.1.1", "1.1.1.1", 100, 1}, {"b", "2.2.2.2", "2.2.2.2", 20, 2}}, at(kNowMinute - 120));
    store->record({{"a", "1.1.1.1", "1.1.1.1", 5, 5}}, at(kNowMinute));
    store->record({{"a", "1.1.1.1", "1.1.1.1", 999, 999}}, at(kNowMinute + 86400));  // after now
    const auto hour = series(kNow - 3600, 60);
    ASSERT_EQ(hour.size(), 61u);
    EXPECT_EQ(hour.front().id, kNowMinute - 3600);
    EXPECT_EQ(hour[58], (UsageBucket{kNowMinute - 120, at(kNowMinute - 120), 120, 3}));
    EXPECT_EQ(hour[59].bytesIn, 0u);
    EXPECT_EQ(hour.back(), (UsageBucket{kNowMinute, at(kNowMinute), 5, 5}));
    EXPECT_EQ(series(kNow - 3600, 30).size(), 61u) << "widths below a minute are a minute";

}

TEST_F(NetworkUsageStoreTest, AppTotalsKeepTwelveBusiestEndpointsButCountAll)
{
    auto store = makeStore();
    std::vector<FlowDelta> deltas;
    for (int i = 1; i <= 20; ++i) {
        const QString ip = QStringLiteral("10.0.0.%1").arg(i);
        deltas.push_back({"browser", ip, ip, static_cast<std::uint64_t>(i * 100), 1});
    }
    deltas.push_back({"mail", "10.1.0.1", "imap.example", 50'000, 0});
    store->record(deltas, at(kNow));
    store->record({{"old", "10.3.0.1", "10.3.0.1", 1'000'000, 0}}, at(kNow - 7200));  // before the range
    store->waitForIdle();
    // A negative sum (a file written by something else) reads as zero.
    SqliteDatabase::open(path())->exec(("INSERT INTO endpoint_usage VALUES (" + std::to_string(kNowMinute)
                                        + ", 'odd', '5.5.5.5', -50, -1)").c_str());
    const auto apps = test::answerOf<std::vector<AppUsageTotal>>([&](auto done) { store->appTotals(at(kNow - 3600), done); });
    ASSERT_EQ(apps.size(), 3u);
    EXPECT_EQ(apps[0].id, "mail");
    EXPECT_EQ(apps[0].endpoints[0].host, "imap.example");
    EXPECT_EQ(apps[1].name, "browser");
    EXPECT_EQ(apps[1].bytesIn, 21'000u);
    EXPECT_EQ(apps[1].bytesOut, 20u);
    ASSERT_EQ(apps[1].endpoints.size(), 12u);
    EXPECT_EQ(apps[1].endpoints.front(), (EndpointUsageTotal{"10.0.0.20", "10.0.0.20", "10.0.0.20", 2000, 1}));
    EXPECT_EQ(apps[1].endpoints.back().ip, "10.0.0.9");
    EXPECT_EQ(apps[2].name, "odd");
    EXPECT_EQ(apps[2].bytesIn, 0u);
}

TEST_F(NetworkUsageStoreTest, OpeningDropsTheOldTableAndOldRowsOnlyAndDestructionFinishesQueuedWrites)
{
    SqliteDatabase::open(path())->exec("CREATE TABLE app_usage (bucket INTEGER, app TEXT)");
    {
        auto store = makeStore();
        store->record({{"ancient", "1.1.1.1", "one.example", 1, 1}}, at(kNow - 91 * 86400));
        store->record({{"recent", "1.1.1.1", "1.1.1.1", 1, 1}}, at(kNow - 89 * 86400));
        store->waitForIdle();
        EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage"), 2) << "nothing is deleted while running";
        for (int i = 0; i < 200; ++i)
            store->record({{"burst", QStringLiteral("10.0.%1.1").arg(i), "x", 1, 1}}, at(kNow));
    }
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage WHERE app = 'burst'"), 200);
    makeStore()->waitForIdle();
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage WHERE app = 'ancient'"), 0);
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage WHERE app = 'recent'"), 1);
    EXPECT_EQ(scalar<QString>(path(), "SELECT group_concat(app) FROM endpoint_usage_hourly WHERE app != 'burst'"), "recent");
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM hosts WHERE host = 'one.example'"), 1) << "names are never deleted";
    EXPECT_EQ(scalar<QString>(path(), "PRAGMA journal_mode"), "wal");
    EXPECT_EQ(scalar<QString>(path(), "SELECT group_concat(name, ',') FROM sqlite_master WHERE type = 'table'"),
              "endpoint_usage,hosts,endpoint_usage_hourly");
}

// The one warning it gives is checked through the program's stderr in ProgramRunTest.
TEST_F(NetworkUsageStoreTest, DirectoryThatCannotBeCreatedLeavesTheStoreInert)
{
    test::writeFile(dir.path(), "blocked", {});
    NetworkUsageStore store(dir.filePath("blocked/Tallowmere"), test::stoppedClock(kNow));
    store.record({{"app", "1.1.1.1", "1.1.1.1", 1, 1}}, at(kNow));
    EXPECT_EQ(test::answerOf<std::vector<UsageBucket>>([&](auto done) { store.bucketSeries(at(kNow - 3600), 60, done); }).size(), 61u);
    EXPECT_TRUE(test::answerOf<std::vector<AppUsageTotal>>([&](auto done) { store.appTotals(at(kNow - 3600), done); }).empty());
}

} // namespace
} // namespace tallowmere
