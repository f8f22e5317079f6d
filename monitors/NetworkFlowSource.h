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

    // How often every process directory has been walked to find socket owners.
    int ownerScanCount() const;

private:
    mutable std::mutex mutex_;
    SockDiagSocket socket_;
    SockDiagDestroyListener closes_;
    NetworkSocketOwners owners_;
    NetworkFlowLedger ledger_;
    std::optional<std::uint32_t> uid_;
};

} // namespace tallowmere
