#pragma once

#include <QByteArray>
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
    // Ed25519 signature of the archive (raw bytes); empty when the feed had none readable.
    QByteArray signature;

    bool operator==(const AvailableUpdate&) const = default;
};

} // namespace tallowmere
