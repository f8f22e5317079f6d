#include "monitors/SockDiagSocket.h"

#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>

namespace tallowmere {

SockDiagSocket::SockDiagSocket()
    : fd_(::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG))
{
    if (fd_) {
        // A kernel that never answers must not hang the sampling thread.
        timeval timeout{2, 0};
        ::setsockopt(fd_.get(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    }
}

std::optional<std::vector<SockDiagRecord>> SockDiagSocket::dumpTcp(int family)
{
    if (!fd_)
        return std::nullopt;
    const std::uint32_t sequence = ++sequence_;
    const std::vector<std::byte> request = sockDiagDumpRequest(family, sequence);
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    if (::sendto(fd_.get(), request.data(), request.size(), 0, reinterpret_cast<sockaddr*>(&kernel),
                 sizeof kernel) < 0)
        return std::nullopt;

    std::vector<SockDiagRecord> records;
    // The kernel fills each datagram up to about one page per answer batch; 64 KiB never truncates.
    buffer_.resize(64 * 1024);
    for (;;) {
        const ssize_t received = ::recv(fd_.get(), buffer_.data(), buffer_.size(), 0);
        if (received < 0 && errno == EINTR)
            continue;
        if (received <= 0)
            return std::nullopt;
        SockDiagChunk chunk = decodeSockDiagChunk({buffer_.data(), static_cast<std::size_t>(received)}, sequence);
        if (chunk.failed)
            return std::nullopt;
        records.insert(records.end(), chunk.records.begin(), chunk.records.end());
        if (chunk.done)
            return records;
    }
}

} // namespace tallowmere
