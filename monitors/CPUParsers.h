#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tallowmere {

// Scheduler ticks summed over all processors, each wrapping modulo 2^32.
struct CPUTicks {
    std::uint32_t user = 0;
    std::uint32_t system = 0;
    std::uint32_t idle = 0;
    std::uint32_t nice = 0;

    bool operator==(const CPUTicks&) const = default;
};

// The aggregate `cpu` line of /proc/stat. Interrupt and stolen time count as system time and
// I/O wait as idle; guest time is already inside user and nice.
std::optional<CPUTicks> parseCPUTicks(std::string_view procStat);

// The figures of one /proc/[pid]/stat line that the per-process walk needs.
struct ProcessStat {
    std::int32_t pid = 0;
    std::string_view name;          // points into the parsed text
    std::uint64_t cpuTicks = 0;     // utime + stime, in clock ticks
    std::uint64_t residentPages = 0;
};

// The name sits in parentheses and may itself hold blanks and ')', so the fields after it are
// found from the last ')'.
std::optional<ProcessStat> parseProcessStat(std::string_view line);

// Clock ticks (USER_HZ) to nanoseconds without overflowing for long-lived processes.
std::uint64_t ticksToNanoseconds(std::uint64_t ticks, std::uint64_t ticksPerSecond);

} // namespace tallowmere
