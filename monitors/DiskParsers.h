#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tallowmere {

struct DiskCounters {
    std::uint64_t read = 0;
    std::uint64_t write = 0;
    bool operator==(const DiskCounters&) const = default;
};

// Bytes read and written by the devices named in `wholeDisks`, summed from /proc/diskstats
// (sectors are always 512 bytes there). Partitions and virtual devices are left out by the
// caller's choice of names so nothing is counted twice. No such device: no reading.
std::optional<DiskCounters> parseDiskStats(std::string_view diskstats, const std::set<std::string>& wholeDisks);

struct VolumeCapacity {
    std::uint64_t capacity = 0;
    std::uint64_t free = 0;
};

// Names below <sysRoot>/block that stand for physical disks: those with a `device` link.
std::set<std::string> physicalDiskNames(const std::string& sysRoot = "/sys");

// statvfs of `path`: capacity is f_blocks x f_frsize, free what an unprivileged user may use.
std::optional<VolumeCapacity> readVolumeCapacity(const std::string& path = "/");

} // namespace tallowmere
