#pragma once

#include <QList>
#include <QString>

#include <cstdint>
#include <optional>

namespace tallowmere {

// One application that is playing sound now, with the server's streams attributed to it.
struct AudioPlayingApp {
    std::int32_t pid = 0;
    // Indices of its playing streams (its own and its helper processes'), in discovery order.
    QList<std::uint32_t> objectIDs;
    // The desktop entry's id, or "pid." and the decimal pid when it has none.
    QString id;
    QString name;
    QString subtitle;
    // A theme icon name or an icon file, from the desktop entry.
    std::optional<QString> icon;

    bool operator==(const AudioPlayingApp&) const = default;
};

// What the popover shows for one playing application.
struct AudioAppSession {
    QString id;
    std::int32_t pid = 0;
    QString name;
    QString subtitle;
    std::optional<QString> icon;
    double volume = 100; // percent, 0 to 100
    bool isMuted = false;

    bool operator==(const AudioAppSession&) const = default;
};

} // namespace tallowmere
