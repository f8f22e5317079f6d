#include "update/UpdateInstaller.h"

#include "core/ChildProcess.h"
#include "core/UniqueFd.h"
#include "update/ArchiveSafety.h"
#include "update/InstallScript.h"
#include "update/UpdateError.h"
#include "update/UpdateSignature.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace tallowmere {

namespace {

const QString unzipProgram = QStringLiteral("/usr/bin/unzip");
const QString bashProgram = QStringLiteral("/bin/bash");
// A large archive on a slow disk may take a while; a hung tool must not keep us forever.
constexpr int unpackTimeoutMs = 10 * 60 * 1000;

// The entry names as the archive tool reads them, or the message when it cannot read them.
std::optional<QString> checkEntryNames(const QString& archive)
{
    const ChildResult listing = runChild(unzipProgram, {QStringLiteral("-Z1"), archive}, unpackTimeoutMs);
    if (!listing.started)
        return QStringLiteral("Couldn't start %1.").arg(unzipProgram);
    if (listing.exitCode != 0)
        return updateErrorMessage(UpdateError::unzipFailed);
    if (firstEscapingEntry(QString::fromUtf8(listing.output).split(u'\n', Qt::SkipEmptyParts)))
        return updateErrorMessage(UpdateError::escapingArchive);
    return std::nullopt;
}

std::optional<QString> unpack(const QString& archive, const QString& folder)
{
    if (std::optional<QString> failure = checkEntryNames(archive))
        return failure;
    if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0)
        return QStringLiteral("Couldn't create the folder %1.").arg(folder);
    const ChildResult result = runChild(unzipProgram, {QStringLiteral("-q"), archive, QStringLiteral("-d"), folder},
                                        unpackTimeoutMs);
    if (!result.started)
        return QStringLiteral("Couldn't start %1.").arg(unzipProgram);
    if (result.exitCode != 0)
        return updateErrorMessage(UpdateError::unzipFailed);
    // Links are made last by the tool, so one can only point out, never carry a later entry out.
    if (firstEscapingLink(folder)) {
        QDir(folder).removeRecursively(); // removes the links themselves, never what they point to
        return updateErrorMessage(UpdateError::escapingArchive);
    }
    return std::nullopt;
}

// A new file only we can read: the script names our folders and is run with our rights.
std::optional<QString> writeScript(const QString& path, const QString& text)
{
    const UniqueFd fd(::open(QFile::encodeName(path).constData(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!fd)
        return QStringLiteral("Couldn't write %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
    const QByteArray bytes = text.toUtf8();
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t n = ::write(fd.get(), bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return QStringLiteral("Couldn't write %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        written += n;
    }
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
    if (!verifyFileSignature(job.archivePath, job.signature, job.publicKey))
        return updateErrorMessage(UpdateError::notVerified);
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
