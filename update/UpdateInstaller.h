#pragma once

#include <QString>

#include <optional>

namespace tallowmere {

// What the worker needs to put a downloaded archive in place: plain values only, because it
// runs away from the main thread.
struct InstallJob {
    QString archivePath;
    QString unpackFolder;
    QString scriptPath;
    QString installedApp;
    qint64 processId = 0;
};

struct LocatedApp {
    QString path;    // the new copy, when found
    QString failure; // the message to show, when not
};

// The first entry of `folder`'s top level, in the order the file system lists it, whose name
// ends in ".app"; hidden entries and anything further down are not looked at. The entry must
// hold bin/tallowmere, or there would be nothing to start after the swap.
LocatedApp locateNewApp(const QString& folder);

// Unpacks the archive, finds the new copy, writes the install script and starts it detached.
// Blocks while the archive tool runs, so call it from a worker thread. Returns the message to
// show when a step fails, nothing once the script is running.
std::optional<QString> unpackAndStartInstaller(const InstallJob& job);

} // namespace tallowmere
