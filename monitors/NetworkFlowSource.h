#pragma once

#include "monitors/NetworkFlowLedger.h"
#include "monitors/NetworkSocketOwners.h"
#include "monitors/NetworkTypes.h"
#include "monitors/SockDiagDestroyListener.h"
#include "monitors/SockDiagSocket.h"

#include <mutex>
#include <optional>
#include <string>

namespace tallowmere {

// TCP bytes per (process label "comm.pid", remote address) since the previous sample, from the
// kernel's socket diagnostics and its notices of closing sockets. Only processes whose
// descriptors we may read are attributed: our own user's, or everyone's with privileges. UDP
// has no per-socket byte counters and is not counted.
//
// A dump of every socket costs the kernel a walk over its whole connection table (about 1 ms
// even with no connections), so a sample dumps only when a connection was opened since the
// last dump (the namespace's count of opened connections tells) or when the last dump is
// older than the refresh interval; otherwise the close notices alone are what changed.
class NetworkFlowSource {
public:
    // With a cgroupRoot (the cgroup2 mount) the owners of new sockets are looked for in their
    // cgroup first.
    explicit NetworkFlowSource(std::string procRoot = "/proc", std::optional<std::string> cgroupRoot = std::nullopt,
                               NetworkSocketOwners::Clock clock = std::chrono::steady_clock::now);

    // One blocking sample; none when the kernel could not be asked (the next good sample then
    // covers both rounds). Safe to call from any thread; overlapping calls take turns.
    std::optional<FlowSample> sample();

    // The next sample only takes the baseline of the sockets alive then.
    void restart();

    // The longest time between two dumps; 0 (the default) dumps at every sample.
    void setRefreshInterval(std::chrono::milliseconds interval);

    // How many samples dumped the sockets.
    int dumpCount() const;

    // How often every process directory has been walked to find socket owners.
    int ownerScanCount() const;

private:
    std::optional<std::uint64_t> readTcpOpens();

    mutable std::mutex mutex_;
    const std::string snmpPath_;
    const NetworkSocketOwners::Clock clock_;
    std::chrono::milliseconds refreshInterval_{0};
    std::optional<std::chrono::steady_clock::time_point> lastDump_;
    std::optional<std::uint64_t> opensAtDump_;
    int dumpCount_ = 0;
    std::string snmpText_;
    SockDiagSocket socket_;
    SockDiagDestroyListener closes_;
    NetworkSocketOwners owners_;
    NetworkFlowLedger ledger_;
    std::optional<std::uint32_t> uid_;
};

// Connections opened so far in the namespace (ActiveOpens + PassiveOpens of the "Tcp:" lines of
// /proc/net/snmp); none when the text lacks them.
std::optional<std::uint64_t> parseTcpOpens(std::string_view snmp);

} // namespace tallowmere
