#include "monitors/SockDiagSocket.h"

#include "app/core/UniqueFd.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// A connected pair on a loopback address of the given family; returns the client's inode.
struct Pair {
    UniqueFd listener, client, server;
    std::uint16_t port = 0;
    std::uint64_t clientInode = 0;

    explicit Pair(int family)
    {
        sockaddr_storage address{};
        socklen_t length = 0;
        if (family == AF_INET) {
            auto* v4 = reinterpret_cast<sockaddr_in*>(&address);
            v4->sin_family = AF_INET;
            inet_pton(AF_INET, "127.0.0.2", &v4->sin_addr);
            length = sizeof *v4;
        } else {
            auto* v6 = reinterpret_cast<sockaddr_in6*>(&address);
            v6->sin6_family = AF_INET6;
            v6->sin6_addr = in6addr_loopback;
            length = sizeof *v6;
        }
        listener.reset(::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), length);
        ::listen(listener.get(), 1);
        ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length);
        port = ntohs(family == AF_INET ? reinterpret_cast<sockaddr_in*>(&address)->sin_port
                                       : reinterpret_cast<sockaddr_in6*>(&address)->sin6_port);
        client.reset(::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ::connect(client.get(), reinterpret_cast<sockaddr*>(&address), length);
        server.reset(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        struct stat info {};
        ::fstat(client.get(), &info);
        clientInode = info.st_ino;
    }
};

const SockDiagRecord* find(const std::vector<SockDiagRecord>& records, std::uint64_t inode)
{
    for (const SockDiagRecord& record : records) {
        if (record.inode == inode)
            return &record;
    }
    return nullptr;
}

TEST(SockDiagSocket, DumpsThisProcessConnectionsOfBothFamiliesButNoListeners)
{
    Pair v4(AF_INET), v6(AF_INET6);
    SockDiagSocket socket;
    ASSERT_TRUE(socket.isOpen());
    for (int round = 0; round < 2; ++round) {
        const auto records = socket.dumpAllTcp();
        ASSERT_TRUE(records);
        const SockDiagRecord* client4 = find(*records, v4.clientInode);
        ASSERT_NE(client4, nullptr);
        EXPECT_EQ(client4->family, AF_INET);
        EXPECT_EQ(client4->remotePort, v4.port);
        EXPECT_EQ(remoteAddressText(*client4), QStringLiteral("127.0.0.2"));
        EXPECT_TRUE(client4->bytes);
        const SockDiagRecord* client6 = find(*records, v6.clientInode);
        ASSERT_NE(client6, nullptr);
        EXPECT_EQ(client6->family, AF_INET6);
        EXPECT_EQ(remoteAddressText(*client6), QStringLiteral("::1"));
        for (const SockDiagRecord& record : *records)
            EXPECT_FALSE(record.remotePort == 0 && record.inode != 0) << "a listener was dumped";
    }
    const auto onlyV6 = socket.dumpTcp(AF_INET6);
    ASSERT_TRUE(onlyV6);
    EXPECT_EQ(find(*onlyV6, v4.clientInode), nullptr);
    EXPECT_NE(find(*onlyV6, v6.clientInode), nullptr);
}

} // namespace
} // namespace tallowmere
