#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

namespace tallowmere {

// Everything the update service takes from the process around it, so tests can point it at a
// loopback feed, a fake installed copy and a stand-in process.
struct UpdateEnvironment {
    QUrl feedUrl;
    qint64 runningBuild = 0;
    // The running binary; the copy it belongs to is found from it (see installedAppFolder).
    QString programPath;
    QString temporaryDirectory;
    qint64 processId = 0;
    // Ends the program once the install script is running; queued on the main thread.
    std::function<void()> quit;

    // The running program: the compiled-in feed unless TALLOWMERE_UPDATE_FEED names another,
    // the compiled-in build number, this process's binary, pid and temporary folder.
    static UpdateEnvironment ofRunningProgram();
};

// The feed address: the environment variable when set and not empty, else the built-in default.
QUrl updateFeedAddress();

// The Tallowmere.app folder a binary at `programPath` belongs to (it must sit at
// Tallowmere.app/bin/<name>), or nothing when the binary was installed some other way, for
// instance by a distribution package, and so must not replace itself.
std::optional<QString> installedAppFolder(const QString& programPath);

} // namespace tallowmere
