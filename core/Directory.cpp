#include "core/Directory.h"

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

const char* Directory::next()
{
    if (!dir_)
        return nullptr;
    while (const dirent* entry = ::readdir(dir_.get())) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        return name;
    }
    return nullptr;
}

} // namespace tallowmere
