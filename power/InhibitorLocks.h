#pragma once

#include "core/UniqueFd.h"

#include <QDBusConnection>
#include <QString>

#include <optional>

namespace tallowmere {

// Asks the login manager and the session's screen saver to hold off sleep, idle and lid
// handling for this process. A lock from the login manager lasts as long as its file
// descriptor stays open; the screen saver's lasts until its cookie is handed back.
class InhibitorLocks {
public:
    InhibitorLocks(QDBusConnection systemBus, QDBusConnection sessionBus);

    // A "block" lock on `what` ("sleep", "idle", "handle-lid-switch"); an invalid descriptor
    // when there is no bus, no login manager, or it refuses.
    UniqueFd inhibit(const QString& what) const;

    // The screen saver's cookie, or nothing when no screen saver answers on the session bus.
    std::optional<quint32> inhibitScreenSaver() const;
    void uninhibitScreenSaver(quint32 cookie) const;

private:
    QDBusConnection systemBus_;
    QDBusConnection sessionBus_;
};

} // namespace tallowmere
