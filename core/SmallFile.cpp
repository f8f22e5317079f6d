#include "core/SmallFile.h"

#include "core/UniqueFd.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tallowmere {

namespace {

bool readAll(int fd, std::string& into)
{
    // Kernel text files report a size of 0, so read until the end. Most fit the stack
    // buffer; copying only what was read avoids clearing a large string on every call.
    char buffer[8192];
    into.clear();
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR)
                continue;
            into.clear();
            return false;
        }
        if (got == 0)
            return true;
        into.append(buffer, static_cast<std::size_t>(got));
        // procfs and sysfs fill every read as far as they can, so a short read is the end;
        // asking again would cost another trip into the kernel on every sample.
        if (static_cast<std::size_t>(got) < sizeof buffer)
            return true;
    }
}

} // namespace

bool readSmallFile(int dirFd, const char* path, std::string& into)
{
    UniqueFd fd(::openat(dirFd, path, O_RDONLY | O_CLOEXEC));
    if (!fd) {
        into.clear();
        return false;
    }
    return readAll(fd.get(), into);
}

bool readSmallFile(const std::string& path, std::string& into)
{
    return readSmallFile(AT_FDCWD, path.c_str(), into);
}

bool entryExists(const std::string& path)
{
    struct stat info {};
    return ::fstatat(AT_FDCWD, path.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace tallowmere
