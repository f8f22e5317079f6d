#include "monitors/SockDiagDestroyListener.h"

#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>

namespace tallowmere {

namespace {

UniqueFd subscribedSocket()
{
    UniqueFd fd(::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_SOCK_DIAG));
    if (!fd)
        return {};
    // The kernel sends these notices from port id 0 and skips the member whose port id equals
    // the sender's, which an unbound socket's is: binding gets us a port id of our own.
    sockaddr_nl self{};
    self.nl_family = AF_NETLINK;
    if (::bind(fd.get(), reinterpret_cast<sockaddr*>(&self), sizeof self) < 0)
        return {};
    // A burst of closes is absorbed by the kernel's queue until the thread catches up; the
    // kernel caps the size at its own maximum.
    const int size = 1 << 20;
    ::setsockopt(fd.get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    for (const int group : {SKNLGRP_INET_TCP_DESTROY, SKNLGRP_INET6_TCP_DESTROY}) {
        if (::setsockopt(fd.get(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) < 0)
            return {};
    }
    return fd;
}

} // namespace

SockDiagDestroyListener::SockDiagDestroyListener(std::size_t capacity, std::optional<std::uint32_t> uid)
    : capacity_(capacity)
    , uid_(uid)
    , socket_(subscribedSocket())
    , wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (socket_ && wake_)
        thread_ = std::thread([this] { run(); });
}

SockDiagDestroyListener::~SockDiagDestroyListener()
{
    if (thread_.joinable()) {
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = ::write(wake_.get(), &one, sizeof one);
        thread_.join();
    }
}

std::vector<SockDiagRecord> SockDiagDestroyListener::take()
{
    std::lock_guard lock(mutex_);
    std::vector<SockDiagRecord> taken;
    taken.swap(closed_);
    return taken;
}

std::size_t SockDiagDestroyListener::collect(std::span<const std::byte> buffer, std::optional<std::uint32_t> uid,
                                             std::size_t capacity, std::vector<SockDiagRecord>& into)
{
    std::size_t lost = 0;
    for (SockDiagRecord& record : decodeSockDiagChunk(buffer, std::nullopt).records) {
        if (!record.bytes || (uid && record.uid != *uid))
            continue;
        if (into.size() >= capacity)
            ++lost;
        else
            into.push_back(std::move(record));
    }
    return lost;
}

void SockDiagDestroyListener::run()
{
    std::vector<std::byte> buffer(64 * 1024);
    pollfd fds[2] = {{socket_.get(), POLLIN, 0}, {wake_.get(), POLLIN, 0}};
    for (;;) {
        if (::poll(fds, 2, -1) < 0 && errno != EINTR)
            return;
        if (fds[1].revents)
            return;
        if (fds[0].revents)
            receiveAvailable(buffer);
    }
}

void SockDiagDestroyListener::receiveAvailable(std::vector<std::byte>& buffer)
{
    for (;;) {
        const ssize_t received = ::recv(socket_.get(), buffer.data(), buffer.size(), 0);
        if (received < 0) {
            // The kernel dropped notices for us; the socket stays usable.
            if (errno == ENOBUFS) {
                ++dropped_;
                continue;
            }
            if (errno == EINTR)
                continue;
            return;  // EAGAIN: drained
        }
        std::lock_guard lock(mutex_);
        dropped_ += collect({buffer.data(), static_cast<std::size_t>(received)}, uid_, capacity_, closed_);
    }
}

} // namespace tallowmere
