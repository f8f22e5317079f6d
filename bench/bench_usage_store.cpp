// Usage store: ingest rate through record() (minute rows and the hourly roll-up), and the
// latency of the two history queries over 90 days of synthetic history at 50 app/address pairs
// per minute (about 6.5 million rows). The history file is written as minute rows only, so the
// first open also times the migration that fills the roll-up.
#include "history/NetworkUsageStore.h"
#include "history/SqliteDatabase.h"
#include "bench/support/UsageHistoryFile.h"

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

constexpr std::int64_t kNow = kHistoryFileNow;

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
    NetworkUsageStore& store = usageHistoryStore();
    const std::int64_t span = state.range(0), width = state.range(1);
    for (auto _ : state)
        waitFor<std::vector<UsageBucket>>([&](auto done) { store.bucketSeries(fromUnixSeconds(kNow - span), width, done); });
}
BENCHMARK(BM_BucketSeries)->Args({3600, 60})->Args({86400, 1800})->Args({604800, 10800})->Args({2592000, 43200})->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_AppTotals(benchmark::State& state)
{
    NetworkUsageStore& store = usageHistoryStore();
    const std::int64_t span = state.range(0);
    for (auto _ : state)
        waitFor<std::vector<AppUsageTotal>>([&](auto done) { store.appTotals(fromUnixSeconds(kNow - span), done); });
}
BENCHMARK(BM_AppTotals)->Arg(3600)->Arg(86400)->Arg(604800)->Arg(2592000)->Unit(benchmark::kMillisecond)->UseRealTime();

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
