#include "history/NetworkUsageStore.h"

#include "tests/history/HistoryTestSupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using test::answerOf;
using test::scalar;

constexpr std::int64_t kNow = 1'700'000'000;  // 2023-11-14 22:13:20 UTC
constexpr std::int64_t kNowMinute = kNow / 60 * 60;

class NetworkUsageStoreTest : public ::testing::Test {
protected:
    std::unique_ptr<NetworkUsageStore> makeStore() { return std::make_unique<NetworkUsageStore>(dir.path(), clock.clock()); }
    QString path() const { return dir.filePath("network-usage.sqlite"); }

    std::vector<UsageBucket> series(NetworkUsageStore& store, std::int64_t since, std::int64_t width)
    {
        return answerOf<std::vector<UsageBucket>>(
            [&](auto done) { store.bucketSeries(fromUnixSeconds(since), width, done); });
    }
    std::vector<AppUsageTotal> totals(NetworkUsageStore& store, std::int64_t since)
    {
        return answerOf<std::vector<AppUsageTotal>>([&](auto done) { store.appTotals(fromUnixSeconds(since), done); });
    }

    QTemporaryDir dir;
    test::TestClock clock{kNow};
};

TEST_F(NetworkUsageStoreTest, CreatesTheDatabaseInWalModeWithTheSchemaAndDropsTheOldTable)
{
    {
        auto old = SqliteDatabase::open(path());
        ASSERT_TRUE(old);
        old->exec("CREATE TABLE app_usage (bucket INTEGER, app TEXT)");
    }
    auto store = makeStore();
    store->waitForIdle();
    EXPECT_EQ(store->databasePath(), path());
    auto db = SqliteDatabase::open(path());
    ASSERT_TRUE(db);
    SqliteStatement mode = db->prepare("PRAGMA journal_mode");
    ASSERT_TRUE(mode.step());
    EXPECT_EQ(mode.columnText(0), QStringLiteral("wal"));
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM sqlite_master WHERE name = 'app_usage'"), 0);
    SqliteStatement schema = db->prepare("SELECT sql FROM sqlite_master WHERE name = 'endpoint_usage'");
    ASSERT_TRUE(schema.step());
    EXPECT_EQ(schema.columnText(0), QStringLiteral("CREATE TABLE endpoint_usage (\n    bucket INTEGER NOT NULL,\n"
                                                   "    app TEXT NOT NULL,\n    ip TEXT NOT NULL,\n"
                                                   "    bytes_in INTEGER NOT NULL DEFAULT 0,\n"
                                                   "    bytes_out INTEGER NOT NULL DEFAULT 0,\n"
                                                   "    PRIMARY KEY (bucket, app, ip)\n)"));
    SqliteStatement hosts = db->prepare("SELECT sql FROM sqlite_master WHERE name = 'hosts'");
    ASSERT_TRUE(hosts.step());
    EXPECT_EQ(hosts.columnText(0), QStringLiteral("CREATE TABLE hosts (\n    ip TEXT PRIMARY KEY,\n    host TEXT NOT NULL\n)"));
}

TEST_F(NetworkUsageStoreTest, RecordsAddUpPerMinuteAppAndAddress)
{
    auto store = makeStore();
    const WallTime early = fromUnixSeconds(kNowMinute + 5);
    const WallTime late = fromUnixSeconds(kNowMinute + 59);
    store->record({{"Safari", "17.253.1.2", "17.253.1.2", 100, 10}, {"curl", "1.1.1.1", "1.1.1.1", 7, 7}}, early);
    store->record({{"Safari", "17.253.1.2", "17.253.1.2", 50, 5}}, late);
    store->record({{"Safari", "17.253.1.2", "17.253.1.2", 1, 1}}, fromUnixSeconds(kNowMinute + 60));
    store->record({}, late);
    store->waitForIdle();
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage"), 3);
    const std::string sameMinute = "SELECT bytes_in * 1000 + bytes_out FROM endpoint_usage WHERE app = 'Safari' AND bucket = "
        + std::to_string(kNowMinute);
    EXPECT_EQ(scalar(path(), sameMinute), 150 * 1000 + 15);
}

TEST_F(NetworkUsageStoreTest, HostNamesAreStoredOnlyWhenResolvedAndTheLatestWins)
{
    auto store = makeStore();
    const WallTime at = clock.time();
    store->record({{"app", "9.9.9.9", "9.9.9.9", 1, 1}}, at);
    store->waitForIdle();
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM hosts"), 0);
    store->record({{"app", "9.9.9.9", "dns9.quad9.net", 1, 1}}, at);
    store->record({{"app", "9.9.9.9", "9.9.9.9", 1, 1}}, at);
    store->waitForIdle();
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM hosts WHERE host = 'dns9.quad9.net'"), 1);
    store->record({{"app", "9.9.9.9", "renamed.example", 1, 1}}, at);
    const auto apps = totals(*store, kNow - 60);
    ASSERT_EQ(apps.size(), 1u);
    EXPECT_EQ(apps[0].endpoints[0].host, "renamed.example");
    EXPECT_EQ(apps[0].bytesIn, 4u);
}

TEST_F(NetworkUsageStoreTest, CountsBeyondTheSignedRangeAreClampedAndNegativeSumsReadAsZero)
{
    auto store = makeStore();
    store->record({{"big", "1.2.3.4", "1.2.3.4", ~std::uint64_t{0}, 3}}, clock.time());
    store->waitForIdle();
    EXPECT_EQ(scalar(path(), "SELECT bytes_in FROM endpoint_usage"), std::numeric_limits<std::int64_t>::max());
    {
        auto db = SqliteDatabase::open(path());
        db->exec(("INSERT INTO endpoint_usage VALUES (" + std::to_string(kNowMinute) + ", 'odd', '5.5.5.5', -50, -1)").c_str());
    }
    const auto apps = totals(*store, kNow - 60);
    ASSERT_EQ(apps.size(), 2u);
    EXPECT_EQ(apps[1].name, "odd");
    EXPECT_EQ(apps[1].bytesIn, 0u);
    EXPECT_EQ(apps[1].bytesOut, 0u);
}

TEST_F(NetworkUsageStoreTest, SeriesHasEveryBucketFromTheAlignedStartThroughNow)
{
    auto store = makeStore();
    store->record({{"a", "1.1.1.1", "1.1.1.1", 100, 1}}, fromUnixSeconds(kNowMinute - 120));
    store->record({{"b", "2.2.2.2", "2.2.2.2", 20, 2}}, fromUnixSeconds(kNowMinute - 120 + 30));
    store->record({{"a", "1.1.1.1", "1.1.1.1", 5, 5}}, fromUnixSeconds(kNowMinute));
    // A bucket after the one holding now: not part of any series.
    store->record({{"a", "1.1.1.1", "1.1.1.1", 999, 999}}, fromUnixSeconds(kNowMinute + 86400));

    const auto hour = series(*store, kNow - 3600, 60);
    ASSERT_EQ(hour.size(), 61u);
    EXPECT_EQ(hour.front().id, (kNow - 3600) / 60 * 60);
    EXPECT_EQ(hour.back().id, kNowMinute);
    EXPECT_EQ(hour.back().start, fromUnixSeconds(kNowMinute));
    EXPECT_EQ(hour[58], (UsageBucket{kNowMinute - 120, fromUnixSeconds(kNowMinute - 120), 120, 3}));
    EXPECT_EQ(hour[59].bytesIn, 0u);
    EXPECT_EQ(hour[60].bytesIn, 5u);

    // Widths below a minute are read as a minute.
    EXPECT_EQ(series(*store, kNow - 3600, 30).size(), 61u);

    // Coarser buckets start on multiples of the width counted from 1970 and merge minutes.
    const auto month = series(*store, kNow - 2592000, 43200);
    ASSERT_EQ(month.size(), 61u);
    EXPECT_EQ(month.front().id % 43200, 0);
    std::uint64_t sum = 0;
    for (const UsageBucket& bucket : month)
        sum += bucket.bytesIn;
    EXPECT_EQ(sum, 125u);
}

TEST_F(NetworkUsageStoreTest, EmptyRangeGivesZeroBuckets)
{
    auto store = makeStore();
    const auto day = series(*store, kNow - 86400, 1800);
    ASSERT_EQ(day.size(), 49u);
    for (const UsageBucket& bucket : day)
        EXPECT_EQ(bucket.bytesIn + bucket.bytesOut, 0u);
    EXPECT_TRUE(totals(*store, kNow - 86400).empty());
}

TEST_F(NetworkUsageStoreTest, AppTotalsKeepTwelveBusiestEndpointsButCountAll)
{
    auto store = makeStore();
    std::vector<FlowDelta> deltas;
    std::uint64_t allIn = 0;
    for (int i = 1; i <= 20; ++i) {
        const QString ip = QStringLiteral("10.0.0.%1").arg(i);
        deltas.push_back({"browser", ip, ip, static_cast<std::uint64_t>(i * 100), 1});
        allIn += static_cast<std::uint64_t>(i * 100);
    }
    deltas.push_back({"mail", "10.1.0.1", "imap.example", 50'000, 0});
    deltas.push_back({"chat", "10.2.0.1", "10.2.0.1", 10, 10});
    store->record(deltas, clock.time());
    // Outside the range asked for.
    store->record({{"old", "10.3.0.1", "10.3.0.1", 1'000'000, 0}}, fromUnixSeconds(kNow - 7200));

    const auto apps = totals(*store, kNow - 3600);
    ASSERT_EQ(apps.size(), 3u);
    EXPECT_EQ(apps[0].name, "mail");
    EXPECT_EQ(apps[0].id, "mail");
    EXPECT_EQ(apps[0].endpoints[0].host, "imap.example");
    EXPECT_EQ(apps[1].name, "browser");
    EXPECT_EQ(apps[1].bytesIn, allIn);
    EXPECT_EQ(apps[1].bytesOut, 20u);
    ASSERT_EQ(apps[1].endpoints.size(), 12u);
    EXPECT_EQ(apps[1].endpoints.front().ip, "10.0.0.20");
    EXPECT_EQ(apps[1].endpoints.front().id, "10.0.0.20");
    EXPECT_EQ(apps[1].endpoints.front().host, "10.0.0.20");
    EXPECT_EQ(apps[1].endpoints.back().ip, "10.0.0.9");
    EXPECT_EQ(apps[2].name, "chat");
}

TEST_F(NetworkUsageStoreTest, RetentionRunsAtOpenOnly)
{
    constexpr std::int64_t day = 86400;
    {
        auto store = makeStore();
        store->record({{"ancient", "1.1.1.1", "one.example", 1, 1}}, fromUnixSeconds(kNow - 91 * day));
        store->record({{"recent", "1.1.1.1", "1.1.1.1", 1, 1}}, fromUnixSeconds(kNow - 89 * day));
        store->waitForIdle();
        // Writing old rows while running keeps them: retention is a start-up matter.
        EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage"), 2);
    }
    auto reopened = makeStore();
    reopened->waitForIdle();
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage WHERE app = 'ancient'"), 0);
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage WHERE app = 'recent'"), 1);
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM hosts"), 1) << "names are never deleted";
}

TEST_F(NetworkUsageStoreTest, DestructionFinishesQueuedWrites)
{
    {
        auto store = makeStore();
        for (int i = 0; i < 200; ++i)
            store->record({{"app", QStringLiteral("10.0.%1.1").arg(i), "x", 1, 1}}, clock.time());
    }
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage"), 200);
}

TEST_F(NetworkUsageStoreTest, DirectoryThatCannotBeCreatedLeavesTheStoreInertWithOneWarning)
{
    QFile blocker(dir.filePath("blocked"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    static QStringList warnings;
    warnings.clear();
    const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtWarningMsg)
            warnings << text;
    });
    {
        NetworkUsageStore store(dir.filePath("blocked/Tallowmere"), clock.clock());
        store.record({{"app", "1.1.1.1", "1.1.1.1", 1, 1}}, clock.time());
        const auto hour = series(store, kNow - 3600, 60);
        EXPECT_EQ(hour.size(), 61u);
        EXPECT_TRUE(totals(store, kNow - 3600).empty());
    }
    qInstallMessageHandler(previous);
    ASSERT_EQ(warnings.size(), 1);
    EXPECT_TRUE(warnings[0].startsWith("[Tallowmere] network history is off")) << warnings[0].toStdString();
    EXPECT_TRUE(warnings[0].contains("blocked/Tallowmere/network-usage.sqlite"));
}

TEST_F(NetworkUsageStoreTest, DefaultDirectoryFollowsXdgDataHome)
{
    test::ScopedEnv home("XDG_DATA_HOME", dir.path().toUtf8());
    EXPECT_EQ(NetworkUsageStore::defaultDirectory(), dir.filePath("Tallowmere"));
}

} // namespace
} // namespace tallowmere
