#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace tallowmere {

// One walk over all processes, taken off the main thread and handed back by value.
struct ProcessSnapshot {
    std::unordered_map<std::int32_t, std::uint64_t> cpuTime;  // user + system, nanoseconds
    std::unordered_map<std::int32_t, std::uint64_t> memory;   // resident bytes
    std::unordered_map<std::int32_t, QString> names;
    std::chrono::system_clock::time_point time;               // when the walk ended
};

// Reads /proc/[pid]/stat of every process below `procRoot` through one directory descriptor.
// Processes that end during the walk are skipped.
ProcessSnapshot collectProcessSnapshot(const std::string& procRoot = "/proc");

} // namespace tallowmere
