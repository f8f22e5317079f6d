#include "bench/support/UsageHistoryFile.h"

#include "history/SqliteDatabase.h"

#include <QDir>
#include <QElapsedTimer>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace tallowmere {

namespace {
constexpr int kPairsPerMinute = 50;
constexpr std::int64_t kDays = 90;
} // namespace

QString usageHistoryDirectory()
{
    const QString dir = QDir::tempPath() + QStringLiteral("/tallowmere-bench-usage");
    const QString path = dir + QStringLiteral("/network-usage.sqlite");
    constexpr std::int64_t expectedRows = kDays * 1440 * kPairsPerMinute;
    if (auto db = SqliteDatabase::open(path)) {
        SqliteStatement count = db->prepare("SELECT count(*) FROM endpoint_usage");
        if (count && count.step() == SqliteStep::row && count.columnInt64(0) == expectedRows)
            return dir;
    }
    QDir(dir).removeRecursively();
    QDir().mkpath(dir);
    auto db = SqliteDatabase::open(path);
    db->exec("PRAGMA journal_mode=WAL");
    db->exec("CREATE TABLE endpoint_usage (bucket INTEGER NOT NULL, app TEXT NOT NULL, ip TEXT NOT NULL, "
             "bytes_in INTEGER NOT NULL DEFAULT 0, bytes_out INTEGER NOT NULL DEFAULT 0, PRIMARY KEY (bucket, app, ip))");
    db->exec("CREATE TABLE hosts (ip TEXT PRIMARY KEY, host TEXT NOT NULL)");
    db->exec("PRAGMA synchronous=OFF");
    std::fprintf(stderr, "building %lld rows of history in %s ...\n", static_cast<long long>(expectedRows), qPrintable(path));
    SqliteTransaction transaction(*db);
    SqliteStatement insert = db->prepare("INSERT INTO endpoint_usage VALUES (?, ?, ?, ?, ?)");
    SqliteStatement host = db->prepare("INSERT OR REPLACE INTO hosts VALUES (?, ?)");
    std::vector<std::pair<std::string, std::string>> pairs;
    for (int i = 0; i < kPairsPerMinute; ++i) {
        pairs.emplace_back("app" + std::to_string(i % 15), "203.0." + std::to_string(i / 10) + "." + std::to_string(i));
        host.reset();
        host.bind(1, std::string_view(pairs.back().second));
        host.bind(2, std::string_view("host" + std::to_string(i) + ".example"));
        host.step();
    }
    const std::int64_t first = (kHistoryFileNow - kDays * 86400) / 60 * 60 + 60;
    for (std::int64_t bucket = first; bucket <= kHistoryFileNow; bucket += 60) {
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            insert.reset();
            insert.bind(1, bucket);
            insert.bind(2, std::string_view(pairs[i].first));
            insert.bind(3, std::string_view(pairs[i].second));
            insert.bind(4, static_cast<std::int64_t>(1000 + (bucket / 60 + static_cast<std::int64_t>(i)) % 5000));
            insert.bind(5, static_cast<std::int64_t>(100 + static_cast<std::int64_t>(i)));
            insert.step();
        }
    }
    transaction.commit();
    db->exec("PRAGMA wal_checkpoint(TRUNCATE)");
    return dir;
}

NetworkUsageStore& usageHistoryStore()
{
    static NetworkUsageStore store(usageHistoryDirectory(), [] { return fromUnixSeconds(kHistoryFileNow); });
    static const bool migrated = [] {
        QElapsedTimer timer;
        timer.start();
        const bool needed = !store.rollupReady();
        while (!store.rollupReady())
            store.waitForIdle();
        if (needed)
            std::fprintf(stderr, "hourly roll-up filled from the minute rows in %.1f s\n", timer.elapsed() / 1000.0);
        return true;
    }();
    (void)migrated;
    return store;
}

} // namespace tallowmere
