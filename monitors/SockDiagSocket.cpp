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
    const std::uint32_t sequence = ++sequence_;
    return dump(sockDiagDumpRequest(family, sequence), sequence);
}

std::optional<std::vector<SockDiagRecord>> SockDiagSocket::dumpAllTcp()
{
    if (!bothFamiliesRefused_) {
        const std::uint32_t sequence = ++sequence_;
        if (auto records = dump(sockDiagBothFamiliesRequest(sequence), sequence))
            return records;
        // A kernel without the older request form answers with an error; stop asking.
        bothFamiliesRefused_ = true;
    }
    auto records = dumpTcp(AF_INET);
    auto records6 = dumpTcp(AF_INET6);
    if (!records)
        return records6;
    if (records6)
        records->insert(records->end(), records6->begin(), records6->end());
    return records;
}

std::optional<std::vector<SockDiagRecord>> SockDiagSocket::dump(const std::vector<std::byte>& request,
                                                                std::uint32_t sequence)
{
    if (!fd_)
        return std::nullopt;
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
