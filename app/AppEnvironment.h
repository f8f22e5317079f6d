#pragma once

#include "monitors/MonitorCommon.h"

#include <QDBusConnection>
#include <QString>
#include <QUrl>

#include <optional>

namespace tallowmere {

// The file system places the services read and write.
struct FileRoots {
    QString proc = QStringLiteral("/proc");
    QString sys = QStringLiteral("/sys");
    QString dev = QStringLiteral("/dev");
    QString config; // holds preferences.json
    QString data;   // holds the usage database
};

// Everything the container takes from the world around the process. forThisMachine() gives
// the real one; tests give private buses, port 0, no feed and temporary folders.
struct AppEnvironment {
    // Not connected until given: a service then finds nobody rather than the real system.
    QDBusConnection systemBus{QString()};
    QDBusConnection sessionBus{QString()};
    quint16 serverPort = 8765;
    QUrl feedUrl; // empty: nobody is asked for updates
    FileRoots roots;
    WallClock clock = systemNow;

    // This run's overrides of the persisted switches (headless), never written back.
    std::optional<bool> localServerOverride;
    std::optional<bool> recordingOverride;
    // Without a tray there is nobody to sample for when the menu-bar switch is on.
    bool hasMenuBar = true;

    QString preferencesPath() const;

    // The user's buses, the compiled-in (or TALLOWMERE_UPDATE_FEED) feed, the user's
    // configuration and data folders, and the machine's /proc, /sys and /dev.
    static AppEnvironment forThisMachine();
};

} // namespace tallowmere
