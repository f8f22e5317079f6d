// Usage store: ingest rate through record() (minute rows and the hourly roll-up), and the
// latency of the two history queries over 90 days of synthetic history at 50 app/address pairs
// per minute (about 6.5 million rows). The history file is written as minute rows only, so the
// first open also times the migration that fills the roll-up.
#include "history/NetworkUsageStore.h"
#include "history/SqliteDatabase.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <optional>

using namespace tallowmere;

namespace {

constexpr std::int64_t kNow = 1'700'000'000;
constexpr int kPairsPerMinute = 50;
constexpr std::int64_t kDays = 90;

WallClock fixedClock()
{
    return [] { return fromUnixSeconds(kNow); };
}

std::vector<FlowDelta> batch(int size, int round)
{
    std::vector<FlowDelta> deltas;
    deltas.reserve(static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i) {
        const QString ip = QStringLiteral("10.%1.%2.%3").arg(round % 200).arg(i / 250).arg(i % 250);
        deltas.push_back({QStringLiteral("app%1").arg(i % 40), ip, i % 3 == 0 ? QStringLiteral("host%1.example").arg(i) : ip,
                          static_cast<std::uint64_t>(1000 + i), static_cast<std::uint64_t>(100 + i)});
    }
    return deltas;
}

// Deltas per second through record(), batches of state.range(0), one transaction each,
// until the worker has written them all.
void BM_StoreIngest(benchmark::State& state)
{
    QTemporaryDir dir;
    NetworkUsageStore store(dir.path(), fixedClock());
    store.waitForIdle();
    const int size = static_cast<int>(state.range(0));
    std::vector<std::vector<FlowDelta>> batches;
    for (int i = 0; i < 64; ++i)
        batches.push_back(batch(size, i));
    int round = 0;
    for (auto _ : state) {
        // Each round lands in a minute of its own, so every delta inserts a row.
        store.record(batches[static_cast<std::size_t>(round % 64)], fromUnixSeconds(kNow - 86400 + 60 * round));
        ++round;
        if (round % 64 == 0)
            store.waitForIdle();
    }
    store.waitForIdle();
    state.SetItemsProcessed(state.iterations() * size);
}
BENCHMARK(BM_StoreIngest)->Arg(50)->Arg(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();

// Builds (once, then reuses) the 90-day history file with fast bulk settings.
QString historyDirectory()
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
    const std::int64_t first = (kNow - kDays * 86400) / 60 * 60 + 60;
    for (std::int64_t bucket = first; bucket <= kNow; bucket += 60) {
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

NetworkUsageStore& historyStore()
{
    static NetworkUsageStore store(historyDirectory(), fixedClock());
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

template <class Result, class Query>
void waitFor(Query query)
{
    bool done = false;
    query([&](Result) { done = true; });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// Latency from the call to the result arriving on the calling thread.
void BM_BucketSeries(benchmark::State& state)
{
    NetworkUsageStore& store = historyStore();
    const std::int64_t span = state.range(0), width = state.range(1);
    for (auto _ : state)
        waitFor<std::vector<UsageBucket>>([&](auto done) { store.bucketSeries(fromUnixSeconds(kNow - span), width, done); });
}
BENCHMARK(BM_BucketSeries)->Args({3600, 60})->Args({604800, 10800})->Args({2592000, 43200})->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_AppTotals(benchmark::State& state)
{
    NetworkUsageStore& store = historyStore();
    const std::int64_t span = state.range(0);
    for (auto _ : state)
        waitFor<std::vector<AppUsageTotal>>([&](auto done) { store.appTotals(fromUnixSeconds(kNow - span), done); });
}
BENCHMARK(BM_AppTotals)->Arg(3600)->Arg(604800)->Arg(2592000)->Unit(benchmark::kMillisecond)->UseRealTime();

// What-if figures, not what the store does: the same statements on a connection of our own.

// Batches of 50 committed with synchronous=NORMAL instead of the default FULL: WAL commits
// then skip the fsync (a power cut may lose the last commits; a killed process loses none).
void BM_WhatIfIngestSynchronousNormal(benchmark::State& state)
{
    QTemporaryDir dir;
    { NetworkUsageStore create(dir.path(), fixedClock()); }
    auto db = SqliteDatabase::open(dir.filePath("network-usage.sqlite"));
    db->exec("PRAGMA synchronous=NORMAL");
    const std::vector<FlowDelta> deltas = batch(50, 0);
    std::int64_t bucket = kNow - 86400;
    for (auto _ : state) {
        SqliteTransaction transaction(*db);
        SqliteStatement upsert = db->prepare(
            "INSERT INTO endpoint_usage (bucket, app, ip, bytes_in, bytes_out) VALUES (?, ?, ?, ?, ?)\n"
            "ON CONFLICT(bucket, app, ip) DO UPDATE SET\n    bytes_in = bytes_in + excluded.bytes_in,\n"
            "    bytes_out = bytes_out + excluded.bytes_out");
        for (const FlowDelta& delta : deltas) {
            upsert.reset();
            upsert.bind(1, bucket);
            upsert.bind(2, delta.app);
            upsert.bind(3, delta.ip);
            upsert.bind(4, static_cast<std::int64_t>(delta.inBytes));
            upsert.bind(5, static_cast<std::int64_t>(delta.outBytes));
            upsert.step();
        }
        upsert = SqliteStatement();
        transaction.commit();
        bucket += 60;
    }
    state.SetItemsProcessed(state.iterations() * 50);
}
BENCHMARK(BM_WhatIfIngestSynchronousNormal)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace
