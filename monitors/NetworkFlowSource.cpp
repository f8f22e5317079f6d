#include "monitors/NetworkFlowSource.h"

#include "monitors/NetworkFlows.h"

#include <sys/socket.h>

namespace tallowmere {

NetworkFlowSource::NetworkFlowSource(std::string procRoot)
    : owners_(std::move(procRoot))
{
}

FlowTable NetworkFlowSource::sample()
{
    std::lock_guard lock(mutex_);
    auto records = socket_.dumpTcp(AF_INET);
    auto records6 = socket_.dumpTcp(AF_INET6);
    if (!records && !records6)
        return {};
    if (!records)
        records.emplace();
    if (records6)
        records->insert(records->end(), records6->begin(), records6->end());

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
