#pragma once

#include "monitors/MonitorCommon.h"

#include <QByteArray>
#include <QString>

namespace tallowmere {

// What `tallowmere --history RANGE` prints: the history card's data for one range ("1H",
// "24H", "7D" or "30D") as one JSON document, read from the database in `directory` without
// changing it. Status 1 with a message when the range is unknown or there is no database.
struct HistoryCommandResult {
    int status = 0;
    QByteArray json;
    QString error;
};

// Needs a QCoreApplication: the store answers through the event loop.
HistoryCommandResult runHistoryCommand(const QString& range, const QString& directory, WallClock clock = systemNow);

} // namespace tallowmere
