#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

namespace tallowmere {

// Byte counts the memory figures are computed from.
struct MemoryCounters {
    std::uint64_t installed = 0;
    std::uint64_t active = 0;
    std::uint64_t wired = 0;
    std::uint64_t compressed = 0;
    bool operator==(const MemoryCounters&) const = default;
};

// /proc/meminfo: wired is what the kernel cannot give back (unreclaimable slab, kernel stacks,
// page tables, unevictable pages); compressed is the zswap pool plus `zramBytes` (memory held by
// zram devices); active is the rest of what is not available, so that active + wired +
// compressed is MemTotal - MemAvailable. Without MemTotal or MemAvailable there is no reading.
std::optional<MemoryCounters> parseMemInfo(std::string_view meminfo, std::uint64_t zramBytes = 0);

// The memory a zram device holds (third field of its mm_stat), or 0 when unreadable.
std::uint64_t parseZramMemUsed(std::string_view mmStat);

struct ProgramMemory {
    std::uint64_t bytes = 0;
    int processCount = 0;
    bool operator==(const ProgramMemory&) const = default;
};
using ProgramMemoryMap = std::map<QString, ProgramMemory>;

// Output of `ps -axo rss=,comm=` grouped by the whole task name; processes without resident
// memory (kernel threads) are left out. Output that is not UTF-8 gives an empty map.
ProgramMemoryMap parsePsOutput(const QByteArray& output);

} // namespace tallowmere
