#include "monitors/ZramDevices.h"

#include "core/Directory.h"
#include "core/SmallFile.h"
#include "monitors/MemoryParsers.h"

#include <algorithm>
#include <cstring>

namespace tallowmere {

ZramDevices::ZramDevices(std::string sysRoot, int relistEvery)
    : sysRoot_(std::move(sysRoot))
    , relistEvery_(std::max(relistEvery, 1))
{
}

void ZramDevices::relist()
{
    statPaths_.clear();
    const std::string block = sysRoot_ + "/block/";
    Directory dir(block);
    while (const char* name = dir.next()) {
        if (std::strncmp(name, "zram", 4) == 0)
            statPaths_.push_back(block + name + "/mm_stat");
    }
}

std::uint64_t ZramDevices::memUsed()
{
    if (callsUntilRelist_-- <= 0) {
        relist();
        callsUntilRelist_ = relistEvery_ - 1;
    }
    std::uint64_t bytes = 0;
    for (const std::string& path : statPaths_) {
        if (readSmallFile(path, text_))
            bytes += parseZramMemUsed(text_);
    }
    return bytes;
}

} // namespace tallowmere
