#include "monitors/NetworkFlowSource.h"
#include "monitors/NetworkMonitor.h"

#include "tests/support/LoopbackConnection.h"

#include <atomic>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using test::LoopbackConnection;

TEST(NetworkFlowSource, RealTrafficArrivesAsFlowDeltasOfThisProcess)
{
    LoopbackConnection connection;
    auto real = std::make_shared<NetworkFlowSource>();
    std::atomic<int> samples{0};
    NetworkMonitorSources sources = NetworkMonitorSources::system();
    sources.flows = [real, &samples] {
        auto sample = real->sample();
        ++samples;
        return sample;
    };
    sources.restartFlows = [real] { real->restart(); };
    // Name lookups are not what this test is about, and may wait on an absent resolver.
    sources.reverseLookup = [](const QString&) { return std::optional<QString>(); };
    NetworkMonitor monitor(sources);
    ByteCounts toServer;
    monitor.setOnFlowDeltas([&](const std::vector<FlowDelta>& deltas, auto) {
        for (const FlowDelta& delta : deltas)
            if (delta.app == test::ownCommand() && delta.ip == LoopbackConnection::kServerAddress)
                toServer = {toServer.inBytes + delta.inBytes, toServer.outBytes + delta.outBytes};
    });
    monitor.setPerAppInterval(0.05);
    monitor.startPerApp();
    // Two samples in: the first one, the baseline, has been applied.
    ASSERT_TRUE(test::waitUntil([&] { return samples.load() >= 2; }));

    constexpr std::size_t up = 123'456, down = 654'321;
    connection.exchange(up, down);
    ASSERT_TRUE(test::waitUntil([&] { return toServer == ByteCounts{down, up}; }))
        << "in " << toServer.inBytes << " out " << toServer.outBytes;
    // The connection is known now: another sample needs no walk over the processes.
    monitor.stopPerApp();
    real->sample();
    const int scans = real->ownerScanCount();
    real->sample();
    EXPECT_EQ(real->ownerScanCount(), scans);
}

} // namespace
} // namespace tallowmere
