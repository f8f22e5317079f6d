#include "monitors/DiskParsers.h"

#include "core/Directory.h"
#include "core/SmallFile.h"
#include "monitors/TextScan.h"

#include <sys/statvfs.h>

namespace tallowmere {

std::optional<DiskCounters> parseDiskStats(std::string_view diskstats, const std::set<std::string>& wholeDisks)
{
    constexpr std::uint64_t kSectorBytes = 512;
    DiskCounters counters;
    bool found = false;
    LineScanner lines(diskstats);
    while (auto line = lines.next()) {
        // major minor name reads merged sectorsRead msReading writes merged sectorsWritten ...
        FieldScanner fields(*line);
        if (!fields.skip(2))
            continue;
        const auto name = fields.next();
        if (!name || !wholeDisks.contains(std::string(*name)))
            continue;
        if (!fields.skip(2))
            continue;
        const auto sectorsRead = fields.next();
        if (!sectorsRead || !fields.skip(3))
            continue;
        const auto sectorsWritten = fields.next();
        if (!sectorsWritten)
            continue;
        const auto read = parseDecimal(*sectorsRead);
        const auto written = parseDecimal(*sectorsWritten);
        if (!read || !written)
            continue;
        counters.read += *read * kSectorBytes;
        counters.write += *written * kSectorBytes;
        found = true;
    }
    if (!found)
        return std::nullopt;
    return counters;
}

std::set<std::string> physicalDiskNames(const std::string& sysRoot)
{
    std::set<std::string> names;
    const std::string block = sysRoot + "/block";
    Directory dir(block);
    while (const char* name = dir.next()) {
        if (entryExists(block + "/" + name + "/device"))
            names.insert(name);
    }
    return names;
}

std::optional<VolumeCapacity> readVolumeCapacity(const std::string& path)
{
    struct statvfs info {};
    if (::statvfs(path.c_str(), &info) != 0)
        return std::nullopt;
    return VolumeCapacity{
        static_cast<std::uint64_t>(info.f_blocks) * info.f_frsize,
        static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize,
    };
}

} // namespace tallowmere
