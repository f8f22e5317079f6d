#pragma once

#include <QByteArray>
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
    QByteArray signature; // from the feed, raw
    QByteArray publicKey; // compiled in, raw
};

struct LocatedApp {
    QString path;    // the new copy, when found
    QString failure; // the message to show, when not
};

// The first entry of `folder`'s top level, in the order the file system lists it, whose name
// ends in ".app"; hidden entries and anything further down are not looked at. The entry must
// hold bin/tallowmere, or there would be nothing to start after the swap.
LocatedApp locateNewApp(const QString& folder);

// Verifies the archive's signature, unpacks it (refusing entries and links that leave the
// unpacking folder), finds the new copy, writes the install script (readable by us only) and
// starts it detached. Nothing is unpacked from an archive that does not verify. Blocks while
// the archive tool runs, so call it from a worker thread. Returns the message to show when a
// step fails, nothing once the script is running.
std::optional<QString> unpackAndStartInstaller(const InstallJob& job);

} // namespace tallowmere
