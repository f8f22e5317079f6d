#pragma once

#include "history/NetworkUsageTypes.h"
#include "monitors/MonitorCommon.h"
#include "monitors/NetworkTypes.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tallowmere {

class SerialQueue;
class SqliteDatabase;

// Per-application, per-remote-address traffic in one-minute buckets with an hourly roll-up
// beside them, both kept for 90 days in network-usage.sqlite. All database work runs in order
// on one worker thread; query results come back on the thread that owns the store. A database
// that cannot be opened leaves the store inert: writes are dropped and queries answer empty.
// A batch that cannot be written (full disk, I/O error, busy file) is rolled back whole,
// counted, and the first failure of each kind logged.
class NetworkUsageStore : public QObject {
    Q_OBJECT
public:
    static constexpr const char* kFileName = "network-usage.sqlite";
    static constexpr std::int64_t kRetentionSeconds = 90 * 86400;

    // $XDG_DATA_HOME/Tallowmere, or empty when the system names no data directory.
    static QString defaultDirectory();

    // readOnly opens an existing file without changing it (no schema, retention or roll-up
    // work); record() must not be called then.
    enum class Access { readWrite, readOnly };

    // Opening happens on the worker; calls made before it finishes wait behind it. A file
    // without the roll-up gets it filled in steps on the worker after opening.
    explicit NetworkUsageStore(QString directory = defaultDirectory(), WallClock clock = systemNow,
                               QObject* parent = nullptr, Access access = Access::readWrite);
    // Runs every write and query already issued, then closes the database.
    ~NetworkUsageStore() override;

    QString databasePath() const { return path_; }

    // Adds one round's deltas to the minute holding `timestamp` and to its hour, in one transaction.
    void record(const std::vector<FlowDelta>& deltas, WallTime timestamp);

    // Traffic per bucket of `bucketSeconds` (at least 60) from the bucket holding `since`
    // through the one holding now, oldest first, empty buckets included. Widths of whole hours
    // read the roll-up once it is complete.
    void bucketSeries(WallTime since, std::int64_t bucketSeconds,
                      std::function<void(std::vector<UsageBucket>)> completion);

    // Every application's traffic since `since`, busiest first, each with its busiest endpoints.
    // Spans over a day read the roll-up for their whole hours once it is complete.
    void appTotals(WallTime since, std::function<void(std::vector<AppUsageTotal>)> completion);

    // Blocks until every call made so far has been carried out on the worker. Results of
    // queries are still delivered through the event loop.
    void waitForIdle();

    // Whether the roll-up is complete and answers the long ranges.
    bool rollupReady() const;
    // Deltas of batches that could not be written.
    std::uint64_t unwrittenDeltas() const;

    // Worker-side state; shared with the jobs already posted.
    struct Connection;

private:
    template <class Result>
    void deliver(std::function<void(Result)> completion, Result result);

    QString path_;
    WallClock clock_;
    std::shared_ptr<Connection> connection_;
    std::unique_ptr<SerialQueue> queue_;
};

} // namespace tallowmere
