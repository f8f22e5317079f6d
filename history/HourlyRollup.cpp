#include "history/HourlyRollup.h"

namespace tallowmere {

namespace {

constexpr const char* kCreateHourly = "CREATE TABLE IF NOT EXISTS endpoint_usage_hourly (\n"
                                      "    bucket INTEGER NOT NULL,\n"
                                      "    app TEXT NOT NULL,\n"
                                      "    ip TEXT NOT NULL,\n"
                                      "    bytes_in INTEGER NOT NULL DEFAULT 0,\n"
                                      "    bytes_out INTEGER NOT NULL DEFAULT 0,\n"
                                      "    PRIMARY KEY (bucket, app, ip)\n"
                                      ") WITHOUT ROWID";
constexpr const char* kCreateMigration = "CREATE TABLE IF NOT EXISTS endpoint_usage_hourly_migration (\n"
                                         "    next_bucket INTEGER NOT NULL,\n"
                                         "    end_bucket INTEGER NOT NULL\n"
                                         ")";
// Hours still to fill: from the oldest minute row's hour through the newest one's.
constexpr const char* kStartMigration = "INSERT INTO endpoint_usage_hourly_migration (next_bucket, end_bucket)\n"
                                        "SELECT (MIN(bucket) / 3600) * 3600, (MAX(bucket) / 3600) * 3600 + 3600\n"
                                        "FROM endpoint_usage HAVING COUNT(*) > 0";
constexpr std::string_view kCopyChunk = "INSERT INTO endpoint_usage_hourly (bucket, app, ip, bytes_in, bytes_out)\n"
                                        "SELECT (bucket / 3600) * 3600, app, ip, SUM(bytes_in), SUM(bytes_out)\n"
                                        "FROM endpoint_usage WHERE bucket >= ? AND bucket < ?\n"
                                        "GROUP BY 1, 2, 3\n"
                                        "ON CONFLICT(bucket, app, ip) DO UPDATE SET\n"
                                        "    bytes_in = bytes_in + excluded.bytes_in,\n"
                                        "    bytes_out = bytes_out + excluded.bytes_out";

} // namespace

const std::string_view kUpsertHourly = "INSERT INTO endpoint_usage_hourly (bucket, app, ip, bytes_in, bytes_out) VALUES (?, ?, ?, ?, ?)\n"
                                       "ON CONFLICT(bucket, app, ip) DO UPDATE SET\n"
                                       "    bytes_in = bytes_in + excluded.bytes_in,\n"
                                       "    bytes_out = bytes_out + excluded.bytes_out";

std::optional<RollupMigration> storedRollupMigration(SqliteDatabase& db, bool* present)
{
    *present = db.tableExists("endpoint_usage_hourly");
    if (!*present || !db.tableExists("endpoint_usage_hourly_migration"))
        return std::nullopt;
    SqliteStatement query = db.prepare("SELECT next_bucket, end_bucket FROM endpoint_usage_hourly_migration");
    if (!query || query.step() != SqliteStep::row)
        return std::nullopt;
    return RollupMigration{query.columnInt64(0), query.columnInt64(1)};
}

std::optional<RollupMigration> prepareHourlyRollup(SqliteDatabase& db)
{
    bool present = false;
    if (auto pending = storedRollupMigration(db, &present); present)
        return pending;
    // The table and the migration's start appear together or not at all.
    SqliteTransaction transaction(db);
    db.exec(kCreateHourly);
    db.exec(kCreateMigration);
    db.exec(kStartMigration);
    if (!storedRollupMigration(db, &present))
        db.exec("DROP TABLE endpoint_usage_hourly_migration");
    if (!transaction.commit())
        return std::nullopt;
    return storedRollupMigration(db, &present);
}

std::optional<RollupMigration> migrateRollupChunk(SqliteDatabase& db, RollupMigration migration,
                                                  std::int64_t chunkSeconds)
{
    const std::int64_t to = std::min(migration.end, migration.next + chunkSeconds);
    SqliteTransaction transaction(db);
    SqliteStatement copy = db.prepare(kCopyChunk);
    if (!transaction.isOpen() || !copy)
        return migration;
    copy.bind(1, migration.next);
    copy.bind(2, to);
    if (copy.step() != SqliteStep::done)
        return migration;
    copy = SqliteStatement();
    const bool finished = to >= migration.end;
    const std::string position = finished ? "DROP TABLE endpoint_usage_hourly_migration"
                                          : "UPDATE endpoint_usage_hourly_migration SET next_bucket = " + std::to_string(to);
    if (!db.exec(position) || !transaction.commit())
        return migration;
    if (finished)
        return std::nullopt;
    return RollupMigration{to, migration.end};
}

bool rollupTakesWritesFor(const std::optional<RollupMigration>& migration, std::int64_t hour)
{
    return !migration || hour < migration->next || hour >= migration->end;
}

} // namespace tallowmere
