#include "core/ProcessFds.h"

#include <unistd.h>

namespace tallowmere {

std::optional<int> pidOfEntry(const char* name)
{
    if (*name == '\0')
        return std::nullopt;
    long value = 0;
    for (; *name; ++name) {
        if (*name < '0' || *name > '9')
            return std::nullopt;
        value = value * 10 + (*name - '0');
        if (value > 0x3fffffff) // above the kernel's pid limit
            return std::nullopt;
    }
    if (value == 0)
        return std::nullopt;
    return static_cast<int>(value);
}

void walkProcessFds(const std::string& procRoot, const FdVisitor& visit)
{
    Directory proc(procRoot);
    std::string path;
    // Longer targets (deep file paths) are of no interest to any caller and are skipped.
    char target[512];
    while (const char* name = proc.next()) {
        const auto pid = pidOfEntry(name);
        if (!pid)
            continue;
        path.assign(name).append("/fd");
        Directory fds(proc.fd(), path.c_str());
        while (const char* fd = fds.next()) {
            const ssize_t length = ::readlinkat(fds.fd(), fd, target, sizeof target);
            if (length <= 0 || static_cast<std::size_t>(length) >= sizeof target)
                continue;
            if (visit(proc, *pid, {target, static_cast<std::size_t>(length)}) == FdWalk::skipProcess)
                break;
        }
    }
}

} // namespace tallowmere
