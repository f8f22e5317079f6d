#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QString>

#include <optional>

namespace tallowmere {

// What the media players on the session bus are playing, looked up by the player's process.
// Meant for one detection round on a worker thread: the players are listed once, on first use.
class MprisTracks {
public:
    explicit MprisTracks(QDBusConnection bus) : bus_(std::move(bus)) {}

    // "Artist — Title" while the process's player reports "Playing".
    std::optional<QString> trackOf(int pid);

private:
    void listPlayers();

    QDBusConnection bus_;
    bool listed_ = false;
    QHash<int, QString> playerByPid_;
};

} // namespace tallowmere
