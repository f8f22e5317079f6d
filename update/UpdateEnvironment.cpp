#include "update/UpdateEnvironment.h"

#include "core/BuildInfo.h"
#include "update/UpdateSignature.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHostAddress>

namespace tallowmere {

QUrl updateFeedAddress()
{
    const QString overridden = qEnvironmentVariable("TALLOWMERE_UPDATE_FEED");
    if (!overridden.isEmpty())
        return QUrl(overridden);
    return QUrl(QString::fromUtf8(build::updateFeedDefault));
}

bool isAllowedUpdateAddress(const QUrl& url)
{
    if (!url.isValid() || url.host().isEmpty())
        return false;
    const QString scheme = url.scheme().toLower();
    if (scheme == QLatin1String("https"))
        return true;
    if (scheme != QLatin1String("http"))
        return false;
    // QUrl gives hosts in lower case and IPv6 addresses without brackets.
    const QString host = url.host();
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

std::optional<QString> installedAppFolder(const QString& programPath)
{
    if (programPath.isEmpty())
        return std::nullopt;
    const QFileInfo program(QDir::cleanPath(QFileInfo(programPath).absoluteFilePath()));
    const QFileInfo binFolder(program.absolutePath());
    const QFileInfo appFolder(binFolder.absolutePath());
    if (binFolder.fileName() != QLatin1String("bin") || appFolder.fileName() != QLatin1String("Tallowmere.app")
        || !appFolder.isDir())
        return std::nullopt;
    return appFolder.absoluteFilePath();
}

UpdateEnvironment UpdateEnvironment::ofRunningProgram()
{
    UpdateEnvironment environment;
    environment.feedUrl = updateFeedAddress();
    environment.runningBuild = build::buildNumber;
    // On Linux this is /proc/self/exe, so a symlink in ~/.local/bin leads to the real copy.
    environment.programPath = QCoreApplication::applicationFilePath();
    environment.temporaryDirectory = QDir::tempPath();
    environment.processId = QCoreApplication::applicationPid();
    environment.quit = [] { QCoreApplication::quit(); };
    environment.runtimeDirectory = qEnvironmentVariable("XDG_RUNTIME_DIR");
    environment.publicKey = decodePublicKey(build::updatePublicKey);
    return environment;
}

} // namespace tallowmere
