#include "history/HourlyRollup.h"
#include "history/NetworkUsageStore.h"

#include "tests/history/HistoryTestSupport.h"

#include <QTemporaryDir>

#include <random>

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using test::scalar;

constexpr std::int64_t kNow = 1'700'000'000;

// Rows of the roll-up that differ from the minute rows summed per hour, both ways round.
constexpr const char* kRollupMismatches =
    "SELECT count(*) FROM ("
    " SELECT * FROM (SELECT (bucket / 3600) * 3600, app, ip, SUM(bytes_in), SUM(bytes_out) FROM endpoint_usage GROUP BY 1, 2, 3"
    "  EXCEPT SELECT * FROM endpoint_usage_hourly)"
    " UNION ALL"
    " SELECT * FROM (SELECT * FROM endpoint_usage_hourly EXCEPT"
    "  SELECT (bucket / 3600) * 3600, app, ip, SUM(bytes_in), SUM(bytes_out) FROM endpoint_usage GROUP BY 1, 2, 3))";

std::vector<FlowDelta> randomBatch(std::mt19937& random)
{
    std::vector<FlowDelta> deltas;
    for (int i = std::uniform_int_distribution(1, 6)(random); i > 0; --i) {
        const QString ip = QStringLiteral("10.0.0.%1").arg(std::uniform_int_distribution(1, 5)(random));
        deltas.push_back({QStringLiteral("app%1").arg(std::uniform_int_distribution(1, 3)(random)), ip, ip,
                          std::uniform_int_distribution<std::uint64_t>(0, 1 << 20)(random),
                          std::uniform_int_distribution<std::uint64_t>(0, 1 << 16)(random)});
    }
    return deltas;
}

class HourlyRollupTest : public ::testing::Test {
protected:
    QString path() const { return dir.filePath("network-usage.sqlite"); }
    std::unique_ptr<NetworkUsageStore> makeStore()
    {
        return std::make_unique<NetworkUsageStore>(dir.path(), test::stoppedClock(kNow));
    }
    // Random batches at random times over the last `days` days.
    void recordRandomly(NetworkUsageStore& store, int batches, int days, unsigned seed)
    {
        std::mt19937 random(seed);
        for (int i = 0; i < batches; ++i)
            store.record(randomBatch(random), fromUnixSeconds(kNow - std::uniform_int_distribution<std::int64_t>(0, days * 86400)(random)));
    }

    QTemporaryDir dir;
};

TEST_F(HourlyRollupTest, RollupIsTheSumOfItsMinutesAndLongRangesAnswerAlike)
{
    auto store = makeStore();
    recordRandomly(*store, 300, 35, 14);
    store->waitForIdle();
    ASSERT_TRUE(store->rollupReady());
    EXPECT_EQ(scalar(path(), kRollupMismatches), 0);

    // 30 days from a time inside an hour: the partial first hour comes from the minutes.
    const std::int64_t since = kNow - 2592000;
    const auto apps = test::answerOf<std::vector<AppUsageTotal>>([&](auto done) { store->appTotals(fromUnixSeconds(since), done); });
    std::int64_t appsIn = 0;
    for (const AppUsageTotal& app : apps)
        appsIn += static_cast<std::int64_t>(app.bytesIn);
    EXPECT_EQ(appsIn, scalar(path(), "SELECT SUM(bytes_in) FROM endpoint_usage WHERE bucket >= " + std::to_string(since)));

    const auto series = test::answerOf<std::vector<UsageBucket>>(
        [&](auto done) { store->bucketSeries(fromUnixSeconds(since), 43200, done); });
    std::int64_t seriesOut = 0;
    for (const UsageBucket& bucket : series)
        seriesOut += static_cast<std::int64_t>(bucket.bytesOut);
    EXPECT_EQ(seriesOut, scalar(path(), "SELECT SUM(bytes_out) FROM endpoint_usage WHERE bucket >= "
                                            + std::to_string(since / 43200 * 43200) + " AND bucket <= " + std::to_string(kNow)));
}

// A file of minute rows only, as written before the roll-up existed.
void writeOldFile(const QString& path)
{
    auto db = SqliteDatabase::open(path);
    db->exec("CREATE TABLE endpoint_usage (bucket INTEGER NOT NULL, app TEXT NOT NULL, ip TEXT NOT NULL, "
             "bytes_in INTEGER NOT NULL DEFAULT 0, bytes_out INTEGER NOT NULL DEFAULT 0, PRIMARY KEY (bucket, app, ip))");
    db->exec("CREATE TABLE hosts (ip TEXT PRIMARY KEY, host TEXT NOT NULL)");
    db->exec("PRAGMA journal_mode=WAL");
    SqliteTransaction transaction(*db);
    std::mt19937 random(10);
    for (std::int64_t minute = (kNow - 10 * 86400) / 60; minute <= kNow / 60; minute += 7) {
        const std::string row = "INSERT INTO endpoint_usage VALUES (" + std::to_string(minute * 60) + ", 'app"
            + std::to_string(random() % 3) + "', '10.0.0." + std::to_string(random() % 4) + "', "
            + std::to_string(random() % 100000) + ", " + std::to_string(random() % 1000) + ") ON CONFLICT DO NOTHING";
        db->exec(row);
    }
    transaction.commit();
}

TEST_F(HourlyRollupTest, OldFileIsMigratedInChunksResumesAfterAKillAndNeverCountsTwice)
{
    writeOldFile(path());
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Commits a few chunks, then stops inside the next one's transaction until killed.
        auto db = SqliteDatabase::open(path());
        std::optional<RollupMigration> migration = prepareHourlyRollup(*db);
        for (int i = 0; i < 5 && migration; ++i)
            migration = migrateRollupChunk(*db, *migration, kHourSeconds * 6);
        db->exec("BEGIN");
        db->exec("INSERT INTO endpoint_usage_hourly SELECT (bucket / 3600) * 3600, app, ip, SUM(bytes_in), SUM(bytes_out) "
                 "FROM endpoint_usage WHERE bucket >= " + std::to_string(migration ? migration->next : 0)
                 + " GROUP BY 1, 2, 3 ON CONFLICT DO NOTHING");
        [[maybe_unused]] const ssize_t written = ::write(ready[1], "k", 1);
        ::pause();
        ::_exit(0);
    }
    char signal = 0;
    ASSERT_EQ(::read(ready[0], &signal, 1), 1);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
    EXPECT_EQ(scalar<QString>(path(), "PRAGMA integrity_check"), "ok");
    EXPECT_GT(scalar(path(), "SELECT next_bucket - " + std::to_string((kNow - 10 * 86400) / 3600 * 3600)
                                 + " FROM endpoint_usage_hourly_migration"), 0);

    // The resumed migration runs on the store's worker between writes of the current hour.
    auto store = makeStore();
    for (int i = 0; i < 50; ++i)
        store->record({{"app1", "10.0.0.1", "10.0.0.1", 10, 1}}, fromUnixSeconds(kNow - i * 60));
    ASSERT_TRUE(test::waitUntil([&] { return store->rollupReady(); }));
    store->waitForIdle();
    EXPECT_EQ(scalar(path(), kRollupMismatches), 0);
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM sqlite_master WHERE name = 'endpoint_usage_hourly_migration'"), 0);
}

TEST_F(HourlyRollupTest, WriteFailuresAreCountedAndLeaveTheFileIntact)
{
    auto store = makeStore();
    store->record({{"app", "10.0.0.1", "10.0.0.1", 1, 1}}, fromUnixSeconds(kNow));
    store->waitForIdle();
    // The files may not grow any more: every write past their size fails as on a full disk.
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit original{};
    ::getrlimit(RLIMIT_FSIZE, &original);
    const rlimit capped{4096, original.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &capped);
    for (int i = 0; i < 20; ++i) {
        std::vector<FlowDelta> many;
        for (int j = 0; j < 200; ++j)
            many.push_back({QStringLiteral("a%1").arg(j), QStringLiteral("10.1.%1.%2").arg(i).arg(j), "x", 5, 5});
        store->record(many, fromUnixSeconds(kNow - i * 3600));
    }
    store->waitForIdle();
    ::setrlimit(RLIMIT_FSIZE, &original);
    EXPECT_GT(store->unwrittenDeltas(), 0u);
    EXPECT_EQ(store->unwrittenDeltas() % 200, 0u) << "a failed batch is dropped whole";
    store->record({{"after", "10.0.0.9", "10.0.0.9", 1, 1}}, fromUnixSeconds(kNow));
    store->waitForIdle();
    EXPECT_EQ(scalar(path(), "SELECT count(*) FROM endpoint_usage WHERE app = 'after'"), 1);
    EXPECT_EQ(scalar<QString>(path(), "PRAGMA integrity_check"), "ok");
    EXPECT_EQ(scalar(path(), kRollupMismatches), 0);
}

} // namespace
} // namespace tallowmere
