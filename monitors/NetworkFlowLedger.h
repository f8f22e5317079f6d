#pragma once

#include "monitors/NetworkTypes.h"
#include "monitors/SockDiagRecord.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

namespace tallowmere {

// What one round of accounting found: bytes per (process label, remote address) since the
// previous round, and bytes whose owner was never found.
struct FlowSample {
    FlowTable deltas;
    ByteCounts unattributed = {};
    std::uint64_t droppedCloses = 0;  // close notices lost so far (cumulative)
};

// Per-socket accounting by socket cookie. Sockets alive at the first round after a (re)start are
// the baseline; a socket first seen later counts from zero, since it was born after the
// previous round. A closing socket adds its final bytes. A socket whose owner is not known yet
// holds its bytes back until the owner is found; a socket that closes ownerless gives them to
// `unattributed`.
class NetworkFlowLedger {
public:
    // The owner label of a live socket's inode, or null when unknown.
    using Labeller = std::function<const QString*(std::uint64_t inode)>;

    // How many rounds a socket that left the dump waits for its close notice.
    static constexpr int kRoundsToWaitForClose = 2;

    // `closed` are the sockets the kernel reported closed since the previous round. Without
    // a close listener (`closesReported` false) a socket that left the dump is forgotten at once.
    FlowSample apply(const std::vector<SockDiagRecord>& live, const std::vector<SockDiagRecord>& closed,
                     const Labeller& labelOf, bool closesReported = true);

    // A round between two dumps: only the final bytes of the sockets that closed meanwhile.
    FlowSample applyClosed(const std::vector<SockDiagRecord>& closed);

    // The next round takes a new baseline.
    void restart();

    std::size_t trackedCount() const { return sockets_.size(); }

private:
    struct Tracked {
        QString label;  // empty while the owner is unknown
        QString address;
        ByteCounts last;
        ByteCounts heldBack;  // counted while no owner was known
        std::uint64_t round = 0;  // last round it was seen alive
    };

    void credit(Tracked& socket, ByteCounts grown, FlowSample& sample) const;
    void creditClosed(const std::vector<SockDiagRecord>& closed, bool baseline, FlowSample& sample);

    std::unordered_map<std::uint64_t, Tracked> sockets_;
    std::uint64_t round_ = 0;
    bool baselineTaken_ = false;
};

} // namespace tallowmere
