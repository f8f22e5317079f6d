#include "update/UpdateInstaller.h"

#include "core/ChildProcess.h"
#include "update/InstallScript.h"
#include "update/UpdateError.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace tallowmere {

namespace {

const QString unzipProgram = QStringLiteral("/usr/bin/unzip");
const QString bashProgram = QStringLiteral("/bin/bash");
// A large archive on a slow disk may take a while; a hung tool must not keep us forever.
constexpr int unpackTimeoutMs = 10 * 60 * 1000;

std::optional<QString> unpack(const QString& archive, const QString& folder)
{
    if (!QDir().mkpath(folder))
        return QStringLiteral("Couldn't create the folder %1.").arg(folder);
    const ChildResult result = runChild(unzipProgram, {QStringLiteral("-q"), archive, QStringLiteral("-d"), folder},
                                        unpackTimeoutMs);
    if (!result.started)
        return QStringLiteral("Couldn't start %1.").arg(unzipProgram);
    if (result.exitCode != 0)
        return updateErrorMessage(UpdateError::unzipFailed);
    return std::nullopt;
}

std::optional<QString> writeScript(const QString& path, const QString& text)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    const QByteArray bytes = text.toUtf8();
    if (file.write(bytes) != bytes.size() || !file.commit())
        return file.errorString();
    return std::nullopt;
}

} // namespace

LocatedApp locateNewApp(const QString& folder)
{
    const QDir dir(folder);
    if (!dir.exists() || !dir.isReadable())
        return {{}, QStringLiteral("Couldn't read the folder %1.").arg(folder)};
    // Unsorted is the order readdir() gives; hidden entries are left out unless asked for.
    const QFileInfoList entries = dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Unsorted);
    for (const QFileInfo& entry : entries) {
        if (entry.suffix() != QLatin1String("app"))
            continue;
        const QFileInfo program(entry.absoluteFilePath() + QStringLiteral("/bin/tallowmere"));
        if (!program.isFile() || !program.isExecutable())
            break;
        return {entry.absoluteFilePath(), {}};
    }
    return {{}, updateErrorMessage(UpdateError::appNotFound)};
}

std::optional<QString> unpackAndStartInstaller(const InstallJob& job)
{
    if (std::optional<QString> failure = unpack(job.archivePath, job.unpackFolder))
        return failure;
    const LocatedApp newApp = locateNewApp(job.unpackFolder);
    if (newApp.path.isEmpty())
        return newApp.failure;
    if (std::optional<QString> failure =
            writeScript(job.scriptPath, installScriptText(job.processId, job.installedApp, newApp.path)))
        return failure;
    if (!startDetachedChild(bashProgram, installScriptLaunchArguments(job.scriptPath)))
        return QStringLiteral("Couldn't start %1.").arg(bashProgram);
    return std::nullopt;
}

} // namespace tallowmere
