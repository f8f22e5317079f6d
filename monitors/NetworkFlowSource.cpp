#include "monitors/NetworkFlowSource.h"

#include <unistd.h>

namespace tallowmere {

namespace {

// Without privileges only our own processes' descriptors can be read; other users' sockets
// would only ever count as unattributable.
std::optional<std::uint32_t> attributableUid()
{
    const uid_t uid = ::geteuid();
    return uid == 0 ? std::nullopt : std::optional<std::uint32_t>(uid);
}

} // namespace

NetworkFlowSource::NetworkFlowSource(std::string procRoot, std::optional<std::string> cgroupRoot,
                                     NetworkSocketOwners::Clock clock)
    : closes_(16384, attributableUid())
    , owners_(std::move(procRoot), std::move(cgroupRoot), std::move(clock))
    , uid_(attributableUid())
{
}

std::optional<FlowSample> NetworkFlowSource::sample()
{
    std::lock_guard lock(mutex_);
    auto records = socket_.dumpAllTcp();
    if (!records)
        return std::nullopt;
    // Taken after the dump: a socket that closed meanwhile is in both, and its close comes last.
    const std::vector<SockDiagRecord> closed = closes_.take();
    if (uid_)
        std::erase_if(*records, [this](const SockDiagRecord& record) { return record.uid != *uid_; });

    std::vector<LiveSocket> sockets;
    sockets.reserve(records->size());
    for (const SockDiagRecord& record : *records) {
        if (record.bytes && record.inode != 0)
            sockets.push_back({record.inode, record.cgroupId});
    }
    owners_.update(sockets);
    FlowSample sample = ledger_.apply(
        *records, closed, [this](std::uint64_t inode) { return owners_.labelOf(inode); }, closes_.isListening());
    sample.droppedCloses = closes_.dropped();
    return sample;
}

void NetworkFlowSource::restart()
{
    std::lock_guard lock(mutex_);
    ledger_.restart();
}

int NetworkFlowSource::ownerScanCount() const
{
    std::lock_guard lock(mutex_);
    return owners_.scanCount();
}

} // namespace tallowmere
