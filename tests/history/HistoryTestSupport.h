#pragma once

#include "history/NetworkUsageStore.h"
#include "history/SqliteDatabase.h"
#include "tests/support/TestSupport.h"

#include <QString>

#include <chrono>
#include <optional>
#include <type_traits>

namespace tallowmere::test {

// A wall clock stopped at the given time.
inline WallClock stoppedClock(std::int64_t unixSeconds)
{
    return [unixSeconds] { return fromUnixSeconds(unixSeconds); };
}

// Runs a store query and waits for its answer on the event loop.
template <class Result, class Query>
Result answerOf(Query query)
{
    std::optional<Result> result;
    query([&](Result answer) { result = std::move(answer); });
    waitUntil([&] { return result.has_value(); });
    return result.value_or(Result{});
}

// The first column of the first row of a query on a separate connection to the database
// file, as an integer (-1 when there is none) or as text.
template <class T = std::int64_t>
T scalar(const QString& path, std::string_view sql)
{
    auto db = SqliteDatabase::open(path);
    SqliteStatement statement = db ? db->prepare(sql) : SqliteStatement{};
    const bool row = statement && statement.step() == SqliteStep::row;
    if constexpr (std::is_same_v<T, QString>)
        return row ? statement.columnText(0).value_or(QString()) : QString();
    else
        return row ? statement.columnInt64(0) : -1;
}

} // namespace tallowmere::test
