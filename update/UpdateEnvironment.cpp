#include "update/UpdateEnvironment.h"

#include "core/BuildInfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace tallowmere {

QUrl updateFeedAddress()
{
    const QString overridden = qEnvironmentVariable("TALLOWMERE_UPDATE_FEED");
    if (!overridden.isEmpty())
        return QUrl(overridden);
    return QUrl(QString::fromUtf8(build::updateFeedDefault));
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
    return environment;
}

} // namespace tallowmere
