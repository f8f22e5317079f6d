#include "monitors/ProcessSnapshot.h"

#include "core/UniqueFd.h"
#include "monitors/CPUParsers.h"
#include "monitors/ProcFiles.h"
#include "monitors/TextScan.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <memory>

namespace tallowmere {

namespace {

struct DirCloser {
    void operator()(DIR* dir) const { ::closedir(dir); }
};

} // namespace

ProcessSnapshot collectProcessSnapshot(const std::string& procRoot)
{
    ProcessSnapshot snapshot;
    static const std::uint64_t ticksPerSecond = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
    static const std::uint64_t pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));

    UniqueFd rootFd(::open(procRoot.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // fdopendir takes over its descriptor, so hand it a duplicate and keep ours for openat.
    // The duplicate is close-on-exec too, or a child started meanwhile would inherit it.
    std::unique_ptr<DIR, DirCloser> dir(rootFd ? ::fdopendir(::fcntl(rootFd.get(), F_DUPFD_CLOEXEC, 0)) : nullptr);
    if (dir) {
        std::string text;
        char path[64];
        while (const dirent* entry = ::readdir(dir.get())) {
            const auto pid = parseDecimal(entry->d_name);
            if (!pid || *pid < 1 || *pid > INT32_MAX)
                continue;
            std::snprintf(path, sizeof path, "%llu/stat", static_cast<unsigned long long>(*pid));
            if (!readSmallFile(rootFd.get(), path, text))
                continue;
            const auto stat = parseProcessStat(text);
            if (!stat)
                continue;
            const std::int32_t id = stat->pid;
            snapshot.cpuTime[id] = ticksToNanoseconds(stat->cpuTicks, ticksPerSecond);
            snapshot.memory[id] = stat->residentPages * pageSize;
            snapshot.names[id] = stat->name.empty()
                ? QStringLiteral("PID %1").arg(id)
                : QString::fromUtf8(stat->name.data(), static_cast<qsizetype>(stat->name.size()));
        }
    }
    snapshot.time = std::chrono::system_clock::now();
    return snapshot;
}

} // namespace tallowmere
