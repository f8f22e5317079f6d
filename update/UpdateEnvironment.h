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
    // Where a fresh private working folder is made when runtimeDirectory offers none.
    QString temporaryDirectory;
    qint64 processId = 0;
    // Ends the program once the install script is running; queued on the main thread.
    std::function<void()> quit;
    // $XDG_RUNTIME_DIR: the working folder is its Tallowmere folder (see makePrivateFolder).
    QString runtimeDirectory;
    // The raw Ed25519 key every archive must be signed with. Only the constructor's caller
    // sets it; it is never read from the process environment.
    QByteArray publicKey;

    // The running program: the compiled-in feed unless TALLOWMERE_UPDATE_FEED names another,
    // the compiled-in build number and public key, this process's binary, pid and folders.
    static UpdateEnvironment ofRunningProgram();
};

// The feed address: the environment variable when set and not empty, else the built-in
// default, which is empty in a build that checks for no updates at all.
QUrl updateFeedAddress();

// Whether updates may be fetched from `url`: over HTTPS, or over plain HTTP from this machine
// (127.0.0.0/8, localhost, [::1]) for tests and local mirrors.
bool isAllowedUpdateAddress(const QUrl& url);

// The Tallowmere.app folder a binary at `programPath` belongs to (it must sit at
// Tallowmere.app/bin/<name>), or nothing when the binary was installed some other way, for
// instance by a distribution package, and so must not replace itself.
std::optional<QString> installedAppFolder(const QString& programPath);

} // namespace tallowmere
