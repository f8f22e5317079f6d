#pragma once

#include "history/SqliteDatabase.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace tallowmere {

// The hourly roll-up beside the minute table: same keys, one row per hour, kept in the same
// transaction as the minute rows. A file written before the roll-up existed is filled from its
// minute rows in chunks of whole hours, oldest first; the position is committed with each
// chunk, so a chunk cut short by a kill is redone whole and nothing counts twice.
inline constexpr std::int64_t kHourSeconds = 3600;

// Hours [next, end) still to be filled from the minute rows.
struct RollupMigration {
    std::int64_t next = 0;
    std::int64_t end = 0;

    bool operator==(const RollupMigration&) const = default;
};

// Creates the roll-up where missing (with a migration when minute rows exist) and returns the
// migration still to run, if any.
std::optional<RollupMigration> prepareHourlyRollup(SqliteDatabase& db);

// The migration as stored in the file, without changing anything (for read-only use); none
// also when the file has no roll-up at all (`present` then false).
std::optional<RollupMigration> storedRollupMigration(SqliteDatabase& db, bool* present);

// Fills up to `chunkSeconds` of hours in one transaction. Returns what remains: none once
// complete; the same migration when the chunk failed.
std::optional<RollupMigration> migrateRollupChunk(SqliteDatabase& db, RollupMigration migration,
                                                  std::int64_t chunkSeconds);

// Whether a minute row written now for `hour` must also be added to the roll-up: not while
// the migration has yet to copy that hour, which will bring the row along.
bool rollupTakesWritesFor(const std::optional<RollupMigration>& migration, std::int64_t hour);

// The upsert of one (hour, app, ip) row, parameters as the minute upsert's.
extern const std::string_view kUpsertHourly;

} // namespace tallowmere
