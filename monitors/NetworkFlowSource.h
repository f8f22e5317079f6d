#pragma once

#include "monitors/NetworkSocketOwners.h"
#include "monitors/NetworkTypes.h"
#include "monitors/SockDiagSocket.h"

#include <mutex>
#include <string>

namespace tallowmere {

// Cumulative TCP byte counters of this machine's connections, per (process label "comm.pid",
// remote address), from the kernel's socket diagnostics. Only processes whose descriptors we
// may read are attributed: our own user's, or everyone's with privileges. UDP has no
// per-socket byte counters and is not counted.
class NetworkFlowSource {
public:
    explicit NetworkFlowSource(std::string procRoot = "/proc");

    // One blocking sample; empty when the kernel could not be asked. Safe to call from any
    // thread; overlapping calls take turns.
    FlowTable sample();

    // How often the process directories have been walked to find socket owners.
    int ownerScanCount() const;

private:
    mutable std::mutex mutex_;
    SockDiagSocket socket_;
    NetworkSocketOwners owners_;
};

} // namespace tallowmere
