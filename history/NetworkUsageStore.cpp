#include "history/NetworkUsageStore.h"

#include "core/Log.h"
#include "history/HourlyRollup.h"
#include "history/SerialQueue.h"
#include "history/SqliteDatabase.h"

#include <sqlite3.h>

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>

#include <algorithm>
#include <atomic>
#include <limits>
#include <set>

namespace tallowmere {

namespace {

constexpr const char* kCreateEndpointUsage = "CREATE TABLE IF NOT EXISTS endpoint_usage (\n"
                                             "    bucket INTEGER NOT NULL,\n"
                                             "    app TEXT NOT NULL,\n"
                                             "    ip TEXT NOT NULL,\n"
                                             "    bytes_in INTEGER NOT NULL DEFAULT 0,\n"
                                             "    bytes_out INTEGER NOT NULL DEFAULT 0,\n"
                                             "    PRIMARY KEY (bucket, app, ip)\n"
                                             ")";
constexpr const char* kCreateHosts = "CREATE TABLE IF NOT EXISTS hosts (\n"
                                     "    ip TEXT PRIMARY KEY,\n"
                                     "    host TEXT NOT NULL\n"
                                     ")";
constexpr std::string_view kUpsertUsage = "INSERT INTO endpoint_usage (bucket, app, ip, bytes_in, bytes_out) VALUES (?, ?, ?, ?, ?)\n"
                                          "ON CONFLICT(bucket, app, ip) DO UPDATE SET\n"
                                          "    bytes_in = bytes_in + excluded.bytes_in,\n"
                                          "    bytes_out = bytes_out + excluded.bytes_out";
constexpr std::string_view kUpsertHost = "INSERT INTO hosts (ip, host) VALUES (?, ?)\n"
                                         "ON CONFLICT(ip) DO UPDATE SET host = excluded.host";
constexpr std::string_view kSeriesQuery = "SELECT (bucket / ?) * ?, SUM(bytes_in), SUM(bytes_out) FROM endpoint_usage\n"
                                          "WHERE bucket >= ?\n"
                                          "GROUP BY 1";
// Summed before the names are joined, so each address is looked up once, not once per minute.
constexpr std::string_view kTotalsQuery = "SELECT g.app, g.ip, COALESCE(h.host, g.ip), g.bytes_in, g.bytes_out\n"
                                          "FROM (SELECT app, ip, SUM(bytes_in) AS bytes_in, SUM(bytes_out) AS bytes_out\n"
                                          "      FROM endpoint_usage WHERE bucket >= ?\n"
                                          "      GROUP BY app, ip) g\n"
                                          "LEFT JOIN hosts h ON h.ip = g.ip";
constexpr std::string_view kHourlySeriesQuery = "SELECT (bucket / ?) * ?, SUM(bytes_in), SUM(bytes_out) FROM endpoint_usage_hourly\n"
                                                "WHERE bucket >= ?\n"
                                                "GROUP BY 1";
// The minutes before the first whole hour from the minute table, the whole hours from the roll-up;
// summed before the names are joined, so each address is looked up once, not once per hour.
constexpr std::string_view kHourlyTotalsQuery = "SELECT g.app, g.ip, COALESCE(h.host, g.ip), g.bytes_in, g.bytes_out\n"
                                                "FROM (SELECT app, ip, SUM(bytes_in) AS bytes_in, SUM(bytes_out) AS bytes_out\n"
                                                "      FROM (SELECT app, ip, bytes_in, bytes_out FROM endpoint_usage\n"
                                                "            WHERE bucket >= ?1 AND bucket < ?2\n"
                                                "            UNION ALL\n"
                                                "            SELECT app, ip, bytes_in, bytes_out FROM endpoint_usage_hourly WHERE bucket >= ?2)\n"
                                                "      GROUP BY app, ip) g\n"
                                                "LEFT JOIN hosts h ON h.ip = g.ip";

constexpr std::int64_t kMinuteSeconds = 60;
// Hours filled per migration step: small enough that a write or query waits only briefly.
constexpr std::int64_t kMigrationChunkSeconds = 6 * kHourSeconds;
// Totals over more than a day come from the roll-up; a day or less from the minutes.
constexpr std::int64_t kRollupTotalsSpan = 86400;

std::int64_t storedCount(std::uint64_t bytes)
{
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return static_cast<std::int64_t>(std::min(bytes, largest));
}

std::uint64_t readCount(std::int64_t sum)
{
    return sum < 0 ? 0 : static_cast<std::uint64_t>(sum);
}

} // namespace

struct NetworkUsageStore::Connection {
    std::optional<SqliteDatabase> db;
    bool rollupPresent = false;
    std::optional<RollupMigration> migration;
    std::atomic<bool> stopping{false};
    std::atomic<bool> rollupReady{false};
    std::atomic<std::uint64_t> unwritten{0};
    std::set<int> failuresLogged;

    void open(const QString& directory, const QString& path, std::int64_t now, bool readOnly);
    void write(const std::vector<FlowDelta>& deltas, std::int64_t bucket);
    bool migrateChunk();
    std::map<std::int64_t, BucketSums> series(std::int64_t width, std::int64_t start);
    std::vector<EndpointRow> endpointRows(std::int64_t since, std::int64_t now);

private:
    bool writeRows(const std::vector<FlowDelta>& deltas, std::int64_t bucket);
    void failed(std::size_t deltas, int code, const QString& message);
    void updateReady() { rollupReady = rollupPresent && !migration; }
};

void NetworkUsageStore::Connection::open(const QString& directory, const QString& path, std::int64_t now, bool readOnly)
{
    if (directory.isEmpty()) {
        logWarning(QStringLiteral("network history is off: the system names no data directory"));
        return;
    }
    QString error;
    if (readOnly) {
        db = SqliteDatabase::openReadOnly(path, &error);
        if (db)
            migration = storedRollupMigration(*db, &rollupPresent);
        updateReady();
        return;
    }
    QDir().mkpath(directory);
    db = SqliteDatabase::open(path, &error);
    if (!db) {
        logWarning(QStringLiteral("network history is off: cannot open %1 (%2)").arg(path, error));
        return;
    }
    db->exec("PRAGMA journal_mode=WAL");
    db->exec("DROP TABLE IF EXISTS app_usage");
    db->exec(kCreateEndpointUsage);
    db->exec(kCreateHosts);
    const std::int64_t cutoff = now - kRetentionSeconds;
    db->exec("DELETE FROM endpoint_usage WHERE bucket < " + std::to_string(cutoff));
    migration = prepareHourlyRollup(*db);
    rollupPresent = db->tableExists("endpoint_usage_hourly");
    // An hour is dropped once all of it lies before the cutoff.
    db->exec("DELETE FROM endpoint_usage_hourly WHERE bucket <= " + std::to_string(cutoff - kHourSeconds));
    updateReady();
    if (db->isReadOnly() || !db->prepare("SELECT 1 FROM endpoint_usage LIMIT 0"))
        logWarning(QStringLiteral("network history cannot be recorded: %1 is not writable (%2)").arg(path, db->lastError()));
    if (migration)
        logInfo(QStringLiteral("adding the hourly roll-up to the network history; long ranges read the minutes until it is done"));
}

void NetworkUsageStore::Connection::failed(std::size_t deltas, int code, const QString& message)
{
    unwritten += deltas;
    const int kind = code == SQLITE_FULL || code == SQLITE_IOERR || code == SQLITE_BUSY || code == SQLITE_LOCKED ? code : 0;
    if (!failuresLogged.insert(kind).second)
        return;
    const QString what = kind == SQLITE_FULL ? QStringLiteral("the disk is full")
        : kind == SQLITE_IOERR               ? QStringLiteral("an I/O error")
        : kind == 0                          ? QStringLiteral("an error")
                                             : QStringLiteral("the database is busy");
    logWarning(QStringLiteral("network history could not be written (%1: %2); such batches are counted and dropped")
                   .arg(what, message));
}

void NetworkUsageStore::Connection::write(const std::vector<FlowDelta>& deltas, std::int64_t bucket)
{
    if (!db)
        return;
    SqliteTransaction transaction(*db);
    if (!transaction.isOpen()) {
        failed(deltas.size(), db->lastErrorCode(), db->lastError());
        return;
    }
    if (!writeRows(deltas, bucket)) {
        failed(deltas.size(), db->lastErrorCode(), db->lastError());
        return;  // rolled back with the transaction
    }
    if (!transaction.commit())
        failed(deltas.size(), transaction.failure()->code, transaction.failure()->message);
}

bool NetworkUsageStore::Connection::writeRows(const std::vector<FlowDelta>& deltas, std::int64_t bucket)
{
    SqliteStatement usage = db->prepare(kUpsertUsage);
    SqliteStatement hosts = db->prepare(kUpsertHost);
    const std::int64_t hour = bucket / kHourSeconds * kHourSeconds;
    const bool toRollup = rollupPresent && rollupTakesWritesFor(migration, hour);
    SqliteStatement hourly = toRollup ? db->prepare(kUpsertHourly) : SqliteStatement();
    if (!usage || !hosts || (toRollup && !hourly))
        return false;
    auto upsert = [](SqliteStatement& statement, std::int64_t at, const FlowDelta& delta, std::string_view ip) {
        statement.reset();
        statement.bind(1, at);
        statement.bind(2, delta.app);
        statement.bind(3, ip);
        statement.bind(4, storedCount(delta.inBytes));
        statement.bind(5, storedCount(delta.outBytes));
        return statement.step() == SqliteStep::done;
    };
    for (const FlowDelta& delta : deltas) {
        const QByteArray ip = delta.ip.toUtf8();
        const std::string_view ipText(ip.constData(), static_cast<std::size_t>(ip.size()));
        if (!upsert(usage, bucket, delta, ipText) || (toRollup && !upsert(hourly, hour, delta, ipText)))
            return false;
        // An address without a resolved name keeps whatever name it had.
        if (delta.host != delta.ip) {
            hosts.reset();
            hosts.bind(1, ipText);
            hosts.bind(2, delta.host);
            if (hosts.step() != SqliteStep::done)
                return false;
        }
    }
    return true;
}

bool NetworkUsageStore::Connection::migrateChunk()
{
    if (!db || !migration || stopping)
        return false;
    const RollupMigration before = *migration;
    migration = migrateRollupChunk(*db, before, kMigrationChunkSeconds);
    updateReady();
    if (!migration)
        logInfo(QStringLiteral("the hourly roll-up of the network history is complete"));
    // A failed chunk is tried again at the next start rather than in a tight loop.
    return migration && *migration != before;
}

std::map<std::int64_t, BucketSums> NetworkUsageStore::Connection::series(std::int64_t width, std::int64_t start)
{
    std::map<std::int64_t, BucketSums> sums;
    if (!db)
        return sums;
    // Buckets of whole hours add up the same from the roll-up, at a sixtieth of the rows.
    const bool hourly = rollupReady && width % kHourSeconds == 0;
    SqliteStatement query = db->prepare(hourly ? kHourlySeriesQuery : kSeriesQuery);
    if (!query)
        return sums;
    query.bind(1, width);
    query.bind(2, width);
    query.bind(3, start);
    while (query.step() == SqliteStep::row)
        sums[query.columnInt64(0)] = BucketSums{readCount(query.columnInt64(1)), readCount(query.columnInt64(2))};
    return sums;
}

std::vector<EndpointRow> NetworkUsageStore::Connection::endpointRows(std::int64_t since, std::int64_t now)
{
    std::vector<EndpointRow> rows;
    if (!db)
        return rows;
    const bool hourly = rollupReady && now - since > kRollupTotalsSpan;
    SqliteStatement query = db->prepare(hourly ? kHourlyTotalsQuery : kTotalsQuery);
    if (!query)
        return rows;
    query.bind(1, since);
    if (hourly)
        query.bind(2, (since + kHourSeconds - 1) / kHourSeconds * kHourSeconds);
    while (query.step() == SqliteStep::row) {
        auto app = query.columnText(0);
        auto ip = query.columnText(1);
        auto host = query.columnText(2);
        if (!app || !ip || !host)
            continue;
        rows.push_back(EndpointRow{std::move(*app),
                                   EndpointUsageTotal{*ip, *ip, std::move(*host), readCount(query.columnInt64(3)),
                                                      readCount(query.columnInt64(4))}});
    }
    return rows;
}

QString NetworkUsageStore::defaultDirectory()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return base.isEmpty() ? QString() : base + QStringLiteral("/Tallowmere");
}

namespace {

// One chunk per job, so writes and queries posted meanwhile run in between. The queue runs
// jobs posted by its own jobs even while it is being destroyed; migrateChunk() then declines.
void postMigrationStep(SerialQueue* queue, std::shared_ptr<NetworkUsageStore::Connection> connection)
{
    queue->post([queue, connection] {
        if (connection->migrateChunk())
            postMigrationStep(queue, connection);
    });
}

} // namespace

NetworkUsageStore::NetworkUsageStore(QString directory, WallClock clock, QObject* parent, Access access)
    : QObject(parent)
    , path_(directory.isEmpty() ? QString() : QDir(directory).filePath(QLatin1String(kFileName)))
    , clock_(std::move(clock))
    , connection_(std::make_shared<Connection>())
    , queue_(std::make_unique<SerialQueue>("NetworkUsageStore"))
{
    queue_->post([queue = queue_.get(), connection = connection_, directory, path = path_,
                  now = unixSeconds(clock_()), readOnly = access == Access::readOnly] {
        connection->open(directory, path, now, readOnly);
        if (!readOnly)
            postMigrationStep(queue, connection);
    });
}

bool NetworkUsageStore::rollupReady() const
{
    return connection_->rollupReady;
}

std::uint64_t NetworkUsageStore::unwrittenDeltas() const
{
    return connection_->unwritten;
}

NetworkUsageStore::~NetworkUsageStore()
{
    // A migration still under way stops after its current chunk and resumes at the next start.
    connection_->stopping = true;
    // Finishes the queued work before the connection closes; completions still queued for the
    // event loop are dropped with this object.
    queue_.reset();
}

template <class Result>
void NetworkUsageStore::deliver(std::function<void(Result)> completion, Result result)
{
    QMetaObject::invokeMethod(
        this, [completion = std::move(completion), result = std::move(result)]() mutable { completion(std::move(result)); },
        Qt::QueuedConnection);
}

void NetworkUsageStore::record(const std::vector<FlowDelta>& deltas, WallTime timestamp)
{
    if (deltas.empty())
        return;
    const std::int64_t bucket = unixSeconds(timestamp) / kMinuteSeconds * kMinuteSeconds;
    queue_->post([connection = connection_, deltas, bucket] { connection->write(deltas, bucket); });
}

void NetworkUsageStore::bucketSeries(WallTime since, std::int64_t bucketSeconds,
                                     std::function<void(std::vector<UsageBucket>)> completion)
{
    const std::int64_t width = std::max(bucketSeconds, kMinuteSeconds);
    const std::int64_t start = unixSeconds(since) / width * width;
    const std::int64_t now = unixSeconds(clock_());
    queue_->post([this, connection = connection_, width, start, now, completion = std::move(completion)]() mutable {
        deliver(std::move(completion), gaplessSeries(start, width, now, connection->series(width, start)));
    });
}

void NetworkUsageStore::appTotals(WallTime since, std::function<void(std::vector<AppUsageTotal>)> completion)
{
    const std::int64_t s = unixSeconds(since);
    const std::int64_t now = unixSeconds(clock_());
    queue_->post([this, connection = connection_, s, now, completion = std::move(completion)]() mutable {
        deliver(std::move(completion), rankAppTotals(connection->endpointRows(s, now)));
    });
}

void NetworkUsageStore::waitForIdle()
{
    queue_->waitForIdle();
}

} // namespace tallowmere
