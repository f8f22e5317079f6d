#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace tallowmere {

// The one update entry the feed offers.
struct AvailableUpdate {
    QString version;
    qint64 build = 0;
    QUrl downloadURL;
    QString releaseNotes;
    std::optional<QString> minimumSystemVersion;

    bool operator==(const AvailableUpdate&) const = default;
};

} // namespace tallowmere
