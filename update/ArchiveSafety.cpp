#include "update/ArchiveSafety.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <climits>
#include <unistd.h>

namespace tallowmere {

namespace {

bool isInside(const QString& path, const QString& folder)
{
    return path == folder || path.startsWith(folder + u'/');
}

std::optional<QString> readLink(const QString& path)
{
    char target[PATH_MAX];
    const ssize_t n = ::readlink(QFile::encodeName(path).constData(), target, sizeof target);
    if (n < 0 || n == static_cast<ssize_t>(sizeof target))
        return std::nullopt;
    return QFile::decodeName(QByteArray(target, n));
}

} // namespace

bool isContainedEntryName(QStringView name)
{
    if (name.isEmpty() || name.startsWith(u'/') || name.contains(u'\\') || name.contains(QChar(0)))
        return false;
    for (QStringView part : name.split(u'/')) {
        if (part == u"..")
            return false;
    }
    return true;
}

std::optional<QString> firstEscapingEntry(const QStringList& names)
{
    for (const QString& name : names) {
        if (!isContainedEntryName(name))
            return name;
    }
    return std::nullopt;
}

std::optional<QString> firstEscapingLink(const QString& folder)
{
    const QString root = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    const QString canonicalRoot = QFileInfo(root).canonicalFilePath();
    QDirIterator it(root, QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (!it.fileInfo().isSymLink())
            continue;
        const std::optional<QString> target = readLink(path);
        if (!target || target->startsWith(u'/'))
            return path;
        // Judged by the words of the link and, where it leads somewhere, by where it leads:
        // a chain through other links must end inside too.
        const QString lexical = QDir::cleanPath(QFileInfo(path).absolutePath() + u'/' + *target);
        const QString resolved = QFileInfo(path).canonicalFilePath();
        if (!isInside(lexical, root) || (!resolved.isEmpty() && !isInside(resolved, canonicalRoot)))
            return path;
    }
    return std::nullopt;
}

} // namespace tallowmere
