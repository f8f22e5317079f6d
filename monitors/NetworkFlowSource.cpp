#include "monitors/NetworkFlowSource.h"

#include "monitors/NetworkFlows.h"

namespace tallowmere {

NetworkFlowSource::NetworkFlowSource(std::string procRoot)
    : owners_(std::move(procRoot))
{
}

FlowTable NetworkFlowSource::sample()
{
    std::lock_guard lock(mutex_);
    const auto records = socket_.dumpAllTcp();
    if (!records)
        return {};

    std::vector<std::uint64_t> inodes;
    inodes.reserve(records->size());
    for (const SockDiagRecord& record : *records) {
        if (record.bytes && record.inode != 0)
            inodes.push_back(record.inode);
    }
    owners_.update(inodes);
    return buildFlowTable(*records, [this](std::uint64_t inode) { return owners_.labelOf(inode); });
}

int NetworkFlowSource::ownerScanCount() const
{
    std::lock_guard lock(mutex_);
    return owners_.scanCount();
}

} // namespace tallowmere
