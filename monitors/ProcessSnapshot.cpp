#include "monitors/ProcessSnapshot.h"

#include "core/ProcessFds.h"
#include "core/SmallFile.h"
#include "monitors/CPUParsers.h"

#include <unistd.h>

namespace tallowmere {

ProcessSnapshot collectProcessSnapshot(const std::string& procRoot)
{
    ProcessSnapshot snapshot;
    static const std::uint64_t ticksPerSecond = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
    static const std::uint64_t pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));

    Directory proc(procRoot);
    std::string text;
    std::string path;
    while (const char* name = proc.next()) {
        if (!pidOfEntry(name))
            continue;
        path.assign(name).append("/stat");
        if (!readSmallFile(proc.fd(), path.c_str(), text))
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
    snapshot.time = std::chrono::system_clock::now();
    return snapshot;
}

} // namespace tallowmere
