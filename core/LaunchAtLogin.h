#pragma once

#include <QString>

namespace tallowmere {

// Starting the program at login through an XDG autostart entry.
class LaunchAtLogin {
public:
    enum class Status { enabled, notRegistered };

    // `autostartDir` is normally $XDG_CONFIG_HOME/autostart; `executable` is what the entry runs.
    LaunchAtLogin(QString autostartDir, QString executable);
    static LaunchAtLogin forCurrentUser();

    Status status() const;
    // Both return false and fill `error` when the entry could not be written or removed.
    bool registerItem(QString* error = nullptr);
    bool unregisterItem(QString* error = nullptr);

    QString entryPath() const;

private:
    QString autostartDir_;
    QString executable_;
};

} // namespace tallowmere
