#pragma once

#include "monitors/NetworkTypes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tallowmere {

// What one inet_diag answer says about one TCP socket, decoded from the netlink bytes.
struct SockDiagRecord {
    int family = 0;                               // AF_INET or AF_INET6
    std::array<std::uint8_t, 16> remote{};        // network order; the first 4 bytes for AF_INET
    std::uint16_t remotePort = 0;
    std::uint32_t uid = 0;
    std::uint64_t inode = 0;                      // 0 for sockets no process holds (closing, TIME_WAIT)
    std::uint64_t cookie = 0;                     // the kernel's id of the socket, stable for its life
    std::optional<std::uint64_t> cgroupId;        // cgroup v2 of the creating process, where sent
    std::optional<ByteCounts> bytes;              // tcpi_bytes_received / tcpi_bytes_acked
};

// The records of one buffer received from the dump numbered `sequence` (messages of other
// dumps are skipped; none accepts every message, as the kernel's notifications carry 0). `done` once NLMSG_DONE was seen; `failed` when the kernel answered with
// an error or the buffer was malformed.
struct SockDiagChunk {
    std::vector<SockDiagRecord> records;
    bool done = false;
    bool failed = false;
};

SockDiagChunk decodeSockDiagChunk(std::span<const std::byte> buffer, std::optional<std::uint32_t> sequence);

// The request bytes of a dump of the connected TCP sockets of one family, with INET_DIAG_INFO.
std::vector<std::byte> sockDiagDumpRequest(int family, std::uint32_t sequence);

// The same for IPv4 and IPv6 in one dump, at half the kernel's cost.
std::vector<std::byte> sockDiagBothFamiliesRequest(std::uint32_t sequence);

// Remote address as text ("17.253.1.2", "2606:4700::1"); IPv4-mapped IPv6 addresses are
// written as the IPv4 address they carry. None for an unknown family.
std::optional<QString> remoteAddressText(const SockDiagRecord& record);

} // namespace tallowmere
