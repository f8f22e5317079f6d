#include "monitors/NetworkFlowLedger.h"

#include "monitors/NetworkFlows.h"

namespace tallowmere {

namespace {

// Counters only grow; a smaller value means a reset, which counts as nothing.
ByteCounts grownBy(ByteCounts now, ByteCounts before)
{
    return {now.inBytes >= before.inBytes ? now.inBytes - before.inBytes : 0,
            now.outBytes >= before.outBytes ? now.outBytes - before.outBytes : 0};
}

void add(ByteCounts& sum, ByteCounts more)
{
    sum.inBytes += more.inBytes;
    sum.outBytes += more.outBytes;
}

std::optional<QString> recordedAddress(const SockDiagRecord& record)
{
    if (!record.bytes)
        return std::nullopt;
    std::optional<QString> address = remoteAddressText(record);
    if (!address || !isRecordedRemoteAddress(*address))
        return std::nullopt;
    return address;
}

} // namespace

void NetworkFlowLedger::restart()
{
    sockets_.clear();
    baselineTaken_ = false;
}

FlowSample NetworkFlowLedger::applyClosed(const std::vector<SockDiagRecord>& closed)
{
    FlowSample sample;
    creditClosed(closed, !baselineTaken_, sample);
    return sample;
}

void NetworkFlowLedger::creditClosed(const std::vector<SockDiagRecord>& closed, bool baseline, FlowSample& sample)
{
    for (const SockDiagRecord& record : closed) {
        if (!recordedAddress(record))
            continue;
        const auto it = sockets_.find(record.cookie);
        if (it == sockets_.end()) {
            // Born and closed between two dumps: nobody can be named any more. Closes from
            // before the baseline are not ours to count.
            if (!baseline)
                add(sample.unattributed, *record.bytes);
            continue;
        }
        credit(it->second, grownBy(*record.bytes, it->second.last), sample);
        add(sample.unattributed, it->second.heldBack);
        sockets_.erase(it);
    }
}

void NetworkFlowLedger::credit(Tracked& socket, ByteCounts grown, FlowSample& sample) const
{
    if (socket.label.isEmpty()) {
        add(socket.heldBack, grown);
        return;
    }
    add(grown, socket.heldBack);
    socket.heldBack = {};
    if (grown.inBytes == 0 && grown.outBytes == 0)
        return;
    add(sample.deltas[FlowKey{socket.label, socket.address}], grown);
}

FlowSample NetworkFlowLedger::apply(const std::vector<SockDiagRecord>& live, const std::vector<SockDiagRecord>& closed,
                                    const Labeller& labelOf, bool closesReported)
{
    FlowSample sample;
    const bool baseline = !baselineTaken_;
    baselineTaken_ = true;
    ++round_;

    for (const SockDiagRecord& record : live) {
        const std::optional<QString> address = recordedAddress(record);
        if (!address)
            continue;
        const QString* owner = record.inode != 0 ? labelOf(record.inode) : nullptr;
        auto [it, born] = sockets_.try_emplace(record.cookie);
        Tracked& socket = it->second;
        if (born) {
            socket.address = *address;
            // Alive at the baseline: what it moved before we looked is not ours to count.
            socket.last = baseline ? *record.bytes : ByteCounts{};
        }
        // A socket handed to another process counts for the new holder from now on; an
        // orphaned (closing) socket keeps the owner it had.
        if (owner)
            socket.label = *owner;
        socket.round = round_;
        credit(socket, grownBy(*record.bytes, socket.last), sample);
        socket.last = *record.bytes;
    }

    creditClosed(closed, baseline, sample);

    for (auto it = sockets_.begin(); it != sockets_.end();) {
        const bool waited = !closesReported || round_ - it->second.round > kRoundsToWaitForClose;
        if (it->second.round == round_ || !waited) {
            ++it;
            continue;
        }
        // Gone without a close notice (lost, or never subscribed): its last bytes are unknown.
        add(sample.unattributed, it->second.heldBack);
        it = sockets_.erase(it);
    }
    return sample;
}

} // namespace tallowmere
