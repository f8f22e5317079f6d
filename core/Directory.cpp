#include "core/Directory.h"

#include <sys/stat.h>
#include <unistd.h>

namespace tallowmere {

Directory::Directory(int parentFd, const char* path)
{
    const int fd = ::openat(parentFd, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    // From here on the stream owns the descriptor and closes it with itself.
    dir_.reset(::fdopendir(fd));
    if (!dir_)
        ::close(fd);
}

int Directory::fd() const
{
    return dir_ ? ::dirfd(dir_.get()) : -1;
}

const dirent* Directory::nextEntry()
{
    if (!dir_)
        return nullptr;
    while (const dirent* entry = ::readdir(dir_.get())) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        return entry;
    }
    return nullptr;
}

const char* Directory::next()
{
    const dirent* entry = nextEntry();
    return entry ? entry->d_name : nullptr;
}

const char* Directory::nextFolder(ino_t& inode)
{
    while (const dirent* entry = nextEntry()) {
        if (entry->d_type == DT_DIR) {
            inode = entry->d_ino;
            return entry->d_name;
        }
        // Some file systems leave the type to be asked for.
        struct stat info;
        if (entry->d_type == DT_UNKNOWN && ::fstatat(fd(), entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0
            && S_ISDIR(info.st_mode)) {
            inode = info.st_ino;
            return entry->d_name;
        }
    }
    return nullptr;
}

} // namespace tallowmere
