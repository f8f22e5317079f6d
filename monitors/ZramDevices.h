#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tallowmere {

// The memory held by the zram devices below <sysRoot>/block. Devices come and go rarely (set up
// at boot or by an administrator), so the device list is read again only every `relistEvery`
// calls, not on every sample; a device that went away meanwhile counts 0.
class ZramDevices {
public:
    explicit ZramDevices(std::string sysRoot, int relistEvery = 10);

    std::uint64_t memUsed();

private:
    void relist();

    std::string sysRoot_;
    int relistEvery_;
    int callsUntilRelist_ = 0;
    std::vector<std::string> statPaths_;
    std::string text_;
};

} // namespace tallowmere
