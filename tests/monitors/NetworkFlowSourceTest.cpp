#include "monitors/NetworkFlowSource.h"
#include "monitors/NetworkMonitor.h"

#include "monitors/ProcFiles.h"
#include "tests/support/LoopbackConnection.h"
#include "tests/support/TestSupport.h"

#include <unistd.h>

#include <atomic>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using test::LoopbackConnection;

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
