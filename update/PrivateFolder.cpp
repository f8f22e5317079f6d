#include "update/PrivateFolder.h"

#include "core/UniqueFd.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallowmere {

namespace {

// The folder at `path` exists, is a real folder (not a link to one), belongs to us and
// admits nobody else, or is made so.
bool isOurPrivateFolder(const QByteArray& path)
{
    if (::mkdir(path.constData(), 0700) != 0 && errno != EEXIST)
        return false;
    const UniqueFd fd(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!fd || ::fstat(fd.get(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::geteuid())
        return false;
    return (status.st_mode & 077) == 0 || ::fchmod(fd.get(), 0700) == 0;
}

} // namespace

std::optional<QString> makePrivateFolder(const QString& runtimeDirectory, const QString& fallbackParent)
{
    if (!runtimeDirectory.isEmpty()) {
        const QString folder = runtimeDirectory + QStringLiteral("/Tallowmere");
        if (isOurPrivateFolder(QFile::encodeName(folder)))
            return folder;
    }
    QByteArray pattern = QFile::encodeName(fallbackParent + QStringLiteral("/Tallowmere-XXXXXX"));
    if (!::mkdtemp(pattern.data()))
        return std::nullopt;
    return QFile::decodeName(pattern);
}

} // namespace tallowmere
