#include "monitors/NetworkFlowSource.h"
#include "monitors/NetworkMonitor.h"

#include "app/core/UniqueFd.h"
#include "monitors/ProcFiles.h"
#include "tests/support/TestSupport.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// A TCP connection inside this process between two loopback addresses other than 127.0.0.1,
// so both ends are recorded: the client sees 127.0.0.2, the accepted end sees 127.0.0.3.
struct LoopbackConnection {
    UniqueFd listener, client, server;
    static constexpr const char* kServerAddress = "127.0.0.2";
    static constexpr const char* kClientAddress = "127.0.0.3";

    LoopbackConnection()
    {
        listener.reset(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address = endpoint(kServerAddress);
        socklen_t length = sizeof address;
        if (::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), length) != 0
            || ::listen(listener.get(), 1) != 0
            || ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
            throw std::runtime_error("cannot listen on 127.0.0.2");
        client.reset(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in local = endpoint(kClientAddress);
        if (::bind(client.get(), reinterpret_cast<sockaddr*>(&local), sizeof local) != 0
            || ::connect(client.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("cannot connect to 127.0.0.2");
        server.reset(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    }

    static sockaddr_in endpoint(const char* ip)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        inet_pton(AF_INET, ip, &address.sin_addr);
        return address;
    }

    static void sendAll(int fd, std::size_t count)
    {
        const std::vector<char> chunk(16 * 1024, 'x');
        while (count > 0) {
            const ssize_t sent = ::send(fd, chunk.data(), std::min(count, chunk.size()), MSG_NOSIGNAL);
            if (sent <= 0)
                return;
            count -= static_cast<std::size_t>(sent);
        }
    }
    static void receiveAll(int fd, std::size_t count)
    {
        std::vector<char> buffer(64 * 1024);
        while (count > 0) {
            const ssize_t got = ::recv(fd, buffer.data(), std::min(count, buffer.size()), 0);
            if (got <= 0)
                return;
            count -= static_cast<std::size_t>(got);
        }
    }

    // Moves `up` bytes from client to server and `down` bytes back, both ends read to the last.
    void exchange(std::size_t up, std::size_t down)
    {
        std::thread serverSide([&] {
            receiveAll(server.get(), up);
            sendAll(server.get(), down);
        });
        sendAll(client.get(), up);
        receiveAll(client.get(), down);
        serverSide.join();
    }
};

QString ownCommand()
{
    std::string comm;
    readSmallFile("/proc/self/comm", comm);
    while (!comm.empty() && comm.back() == '\n')
        comm.pop_back();
    return QString::fromStdString(comm);
}

TEST(NetworkFlowSource, SeesThisProcessConnectionWithItsCounters)
{
    LoopbackConnection connection;
    connection.exchange(3000, 7000);
    NetworkFlowSource source;
    const QString label = ownCommand() + u'.' + QString::number(::getpid());
    const FlowTable table = source.sample();
    const auto client = table.find(FlowKey{label, LoopbackConnection::kServerAddress});
    ASSERT_NE(client, table.end()) << "own connection to 127.0.0.2 not found among " << table.size();
    EXPECT_EQ(client->second.inBytes, 7000u);
    EXPECT_GE(client->second.outBytes, 3000u);
    const auto server = table.find(FlowKey{label, LoopbackConnection::kClientAddress});
    ASSERT_NE(server, table.end());
    EXPECT_EQ(server->second.inBytes, 3000u);
    for (const auto& [key, bytes] : table) {
        EXPECT_NE(key.remoteIP, "127.0.0.1");
        EXPECT_NE(key.remoteIP, "::1");
    }
    // The connection is known now: a second sample needs no walk over the processes.
    const int scans = source.ownerScanCount();
    source.sample();
    EXPECT_EQ(source.ownerScanCount(), scans);
}

TEST(NetworkFlowSource, RealTrafficArrivesAsFlowDeltasOfThisProcess)
{
    LoopbackConnection connection;
    auto real = std::make_shared<NetworkFlowSource>();
    std::atomic<int> samples{0};
    NetworkMonitorSources sources = NetworkMonitorSources::system();
    sources.flows = [real, &samples] {
        FlowTable table = real->sample();
        ++samples;
        return table;
    };
    // Name lookups are not what this test is about, and may wait on an absent resolver.
    sources.reverseLookup = [](const QString&) { return std::optional<QString>(); };
    NetworkMonitor monitor(sources);
    ByteCounts toServer, toClient;
    monitor.setOnFlowDeltas([&](const std::vector<FlowDelta>& deltas, std::chrono::system_clock::time_point) {
        for (const FlowDelta& delta : deltas) {
            if (delta.app != ownCommand())
                continue;
            ByteCounts& sum = delta.ip == LoopbackConnection::kServerAddress ? toServer : toClient;
            if (delta.ip == LoopbackConnection::kServerAddress || delta.ip == LoopbackConnection::kClientAddress) {
                sum.inBytes += delta.inBytes;
                sum.outBytes += delta.outBytes;
            }
        }
    });
    monitor.setPerAppInterval(0.05);
    monitor.startPerApp();
    // Two samples in: the first one, the baseline, has been applied.
    ASSERT_TRUE(test::waitUntil([&] { return samples.load() >= 2; }));

    constexpr std::size_t up = 123'456, down = 654'321;
    connection.exchange(up, down);
    ASSERT_TRUE(test::waitUntil([&] { return toServer == ByteCounts{down, up} && toClient == ByteCounts{up, down}; }))
        << "client side in " << toServer.inBytes << " out " << toServer.outBytes << ", server side in "
        << toClient.inBytes << " out " << toClient.outBytes;
}

} // namespace
} // namespace tallowmere
