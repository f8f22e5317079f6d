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

void walkProcessFds(const std::string& procRoot, const FdVisitor& visit, const std::vector<int>& pids)
{
    Directory proc(procRoot);
    if (!proc)
        return;
    std::string path;
    // Longer targets (deep file paths) are of no interest to any caller and are skipped.
    char target[512];
    // Visits one process's descriptors; false when the visitor ended the walk.
    auto visitProcess = [&](int pid) {
        path.assign(std::to_string(pid)).append("/fd");
        Directory fds(proc.fd(), path.c_str());
        while (const char* fd = fds.next()) {
            const ssize_t length = ::readlinkat(fds.fd(), fd, target, sizeof target);
            if (length <= 0 || static_cast<std::size_t>(length) >= sizeof target)
                continue;
            switch (visit(proc, pid, {target, static_cast<std::size_t>(length)})) {
            case FdWalk::next: continue;
            case FdWalk::skipProcess: return true;
            case FdWalk::stop: return false;
            }
        }
        return true;
    };
    if (!pids.empty()) {
        for (const int pid : pids)
            if (!visitProcess(pid))
                return;
        return;
    }
    while (const char* name = proc.next()) {
        if (const auto pid = pidOfEntry(name); pid && !visitProcess(*pid))
            return;
    }
}

} // namespace tallowmere
