#include "history/NetworkUsageStore.h"

#include "core/Log.h"
#include "history/SerialQueue.h"
#include "history/SqliteDatabase.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>

#include <algorithm>
#include <limits>

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
constexpr std::string_view kTotalsQuery = "SELECT u.app, u.ip, COALESCE(h.host, u.ip), SUM(u.bytes_in), SUM(u.bytes_out)\n"
                                          "FROM endpoint_usage u\n"
                                          "LEFT JOIN hosts h ON h.ip = u.ip\n"
                                          "WHERE u.bucket >= ?\n"
                                          "GROUP BY u.app, u.ip";

constexpr std::int64_t kMinuteSeconds = 60;

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

    void open(const QString& directory, const QString& path, std::int64_t now);
    void write(const std::vector<FlowDelta>& deltas, std::int64_t bucket);
    std::map<std::int64_t, BucketSums> series(std::int64_t width, std::int64_t start);
    std::vector<EndpointRow> endpointRows(std::int64_t since);
};

void NetworkUsageStore::Connection::open(const QString& directory, const QString& path, std::int64_t now)
{
    if (directory.isEmpty()) {
        logWarning(QStringLiteral("network history is off: the system names no data directory"));
        return;
    }
    QDir().mkpath(directory);
    QString error;
    db = SqliteDatabase::open(path, &error);
    if (!db) {
        logWarning(QStringLiteral("network history is off: cannot open %1 (%2)").arg(path, error));
        return;
    }
    db->exec("PRAGMA journal_mode=WAL");
    db->exec("DROP TABLE IF EXISTS app_usage");
    db->exec(kCreateEndpointUsage);
    db->exec(kCreateHosts);
    const std::string retention = "DELETE FROM endpoint_usage WHERE bucket < " + std::to_string(now - kRetentionSeconds);
    db->exec(retention.c_str());
    if (db->isReadOnly() || !db->prepare("SELECT 1 FROM endpoint_usage LIMIT 0"))
        logWarning(QStringLiteral("network history cannot be recorded: %1 is not writable (%2)").arg(path, db->lastError()));
}

void NetworkUsageStore::Connection::write(const std::vector<FlowDelta>& deltas, std::int64_t bucket)
{
    if (!db)
        return;
    SqliteTransaction transaction(*db);
    {
        SqliteStatement usage = db->prepare(kUpsertUsage);
        if (!usage)
            return;
        SqliteStatement hosts = db->prepare(kUpsertHost);
        if (!hosts)
            return;
        for (const FlowDelta& delta : deltas) {
            const QByteArray ip = delta.ip.toUtf8();
            const std::string_view ipText(ip.constData(), static_cast<std::size_t>(ip.size()));
            usage.reset();
            usage.bind(1, bucket);
            usage.bind(2, delta.app);
            usage.bind(3, ipText);
            usage.bind(4, storedCount(delta.inBytes));
            usage.bind(5, storedCount(delta.outBytes));
            usage.step();
            // An address without a resolved name keeps whatever name it had.
            if (delta.host != delta.ip) {
                hosts.reset();
                hosts.bind(1, ipText);
                hosts.bind(2, delta.host);
                hosts.step();
            }
        }
    }
    transaction.commit();
}

std::map<std::int64_t, BucketSums> NetworkUsageStore::Connection::series(std::int64_t width, std::int64_t start)
{
    std::map<std::int64_t, BucketSums> sums;
    if (!db)
        return sums;
    SqliteStatement query = db->prepare(kSeriesQuery);
    if (!query)
        return sums;
    query.bind(1, width);
    query.bind(2, width);
    query.bind(3, start);
    while (query.step())
        sums[query.columnInt64(0)] = BucketSums{readCount(query.columnInt64(1)), readCount(query.columnInt64(2))};
    return sums;
}

std::vector<EndpointRow> NetworkUsageStore::Connection::endpointRows(std::int64_t since)
{
    std::vector<EndpointRow> rows;
    if (!db)
        return rows;
    SqliteStatement query = db->prepare(kTotalsQuery);
    if (!query)
        return rows;
    query.bind(1, since);
    while (query.step()) {
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

NetworkUsageStore::NetworkUsageStore(QString directory, WallClock clock, QObject* parent)
    : QObject(parent)
    , path_(directory.isEmpty() ? QString() : QDir(directory).filePath(QLatin1String(kFileName)))
    , clock_(std::move(clock))
    , connection_(std::make_shared<Connection>())
    , queue_(std::make_unique<SerialQueue>("NetworkUsageStore"))
{
    queue_->post([connection = connection_, directory, path = path_, now = unixSeconds(clock_())] {
        connection->open(directory, path, now);
    });
}

NetworkUsageStore::~NetworkUsageStore()
{
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
    queue_->post([this, connection = connection_, s, completion = std::move(completion)]() mutable {
        deliver(std::move(completion), rankAppTotals(connection->endpointRows(s)));
    });
}

void NetworkUsageStore::waitForIdle()
{
    queue_->waitForIdle();
}

} // namespace tallowmere
