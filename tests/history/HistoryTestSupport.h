#pragma once

#include "history/NetworkUsageStore.h"
#include "history/SqliteDatabase.h"
#include "tests/support/TestSupport.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace tallowmere::test {

// A wall clock the test sets; copies share the time.
class TestClock {
public:
    explicit TestClock(std::int64_t unixSeconds) : now_(std::make_shared<std::atomic<std::int64_t>>(unixSeconds)) {}
    void set(std::int64_t unixSeconds) { *now_ = unixSeconds; }
    std::int64_t seconds() const { return *now_; }
    WallTime time() const { return fromUnixSeconds(*now_); }
    WallClock clock() const
    {
        return [now = now_] { return fromUnixSeconds(*now); };
    }

private:
    std::shared_ptr<std::atomic<std::int64_t>> now_;
};

// Runs a store query and waits for its answer on the event loop.
template <class Result, class Query>
Result answerOf(Query query)
{
    std::optional<Result> result;
    query([&](Result answer) { result = std::move(answer); });
    waitUntil([&] { return result.has_value(); });
    return result.value_or(Result{});
}

// One integer answer of a SELECT on a separate connection to the database file.
inline std::int64_t scalar(const QString& path, std::string_view sql)
{
    auto db = SqliteDatabase::open(path);
    if (!db)
        return -1;
    SqliteStatement statement = db->prepare(sql);
    return statement && statement.step() ? statement.columnInt64(0) : -1;
}

} // namespace tallowmere::test
