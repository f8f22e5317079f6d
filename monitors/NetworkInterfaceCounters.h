#pragma once

#include "monitors/NetworkTypes.h"

#include <optional>
#include <string>
#include <string_view>

namespace tallowmere {

// Sums the received and sent byte counters of every interface in a /proc/net/dev text whose
// name does not begin with "lo". None when the text holds no interface line at all.
std::optional<ByteCounts> parseProcNetDev(std::string_view text);

// Reads <procRoot>/net/dev once a second for the throughput figures.
class NetworkInterfaceCounters {
public:
    explicit NetworkInterfaceCounters(std::string procRoot = "/proc");

    // (0, 0) when the file cannot be read or holds no interface.
    ByteCounts read();

private:
    std::string path_;
    std::string buffer_;
};

} // namespace tallowmere
