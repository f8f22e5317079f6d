#pragma once

#include "core/UniqueFd.h"
#include "monitors/SockDiagRecord.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tallowmere {

// A NETLINK_SOCK_DIAG socket asking the kernel about TCP connections.
class SockDiagSocket {
public:
    SockDiagSocket();

    bool isOpen() const { return fd_.valid(); }

    // Every connected TCP socket of one family (AF_INET or AF_INET6) the kernel shows us, with
    // its byte counters; none when the dump could not be completed. Listening and TIME_WAIT
    // sockets are left out by the kernel: they carry no traffic of a process. Blocking: call
    // it from detached work.
    std::optional<std::vector<SockDiagRecord>> dumpTcp(int family);

    // IPv4 and IPv6 together: one dump where the kernel offers it, else one per family.
    std::optional<std::vector<SockDiagRecord>> dumpAllTcp();

private:
    std::optional<std::vector<SockDiagRecord>> dump(const std::vector<std::byte>& request, std::uint32_t sequence);

    UniqueFd fd_;
    std::uint32_t sequence_ = 0;
    bool bothFamiliesRefused_ = false;
    std::vector<std::byte> buffer_;
};

} // namespace tallowmere
