#include "monitors/NetworkFlows.h"

#include <QSet>

namespace tallowmere {

namespace {

// Counters only grow; a smaller value means a reused slot or a reset, which counts as nothing.
std::uint64_t grownBy(std::uint64_t now, std::uint64_t before)
{
    return now >= before ? now - before : 0;
}

} // namespace

QString applicationName(const QString& processLabel)
{
    const qsizetype dot = processLabel.lastIndexOf(u'.');
    if (dot < 0)
        return processLabel;
    for (qsizetype i = dot + 1; i < processLabel.size(); ++i) {
        if (!processLabel.at(i).isDigit())
            return processLabel;
    }
    return processLabel.left(dot);
}

bool isRecordedRemoteAddress(const QString& address)
{
    return !address.isEmpty() && !address.contains(u'*') && address != u"0.0.0.0" && address != u"::"
        && address != u"127.0.0.1" && address != u"::1";
}

FlowTable buildFlowTable(const std::vector<SockDiagRecord>& records, const SocketLabeller& labelOf)
{
    FlowTable table;
    for (const SockDiagRecord& record : records) {
        if (!record.bytes || record.inode == 0)
            continue;
        const QString* label = labelOf(record.inode);
        if (!label)
            continue;
        const std::optional<QString> address = remoteAddressText(record);
        if (!address || !isRecordedRemoteAddress(*address))
            continue;
        ByteCounts& sum = table[FlowKey{*label, *address}];
        sum.inBytes += record.bytes->inBytes;
        sum.outBytes += record.bytes->outBytes;
    }
    return table;
}

FlowRound computeFlowRound(const FlowTable& previous, const FlowTable& current,
                           const QHash<QString, QString>& hostNames)
{
    FlowTable perApp;
    QSet<QString> seen;
    FlowRound round;
    for (const auto& [key, now] : current) {
        const auto before = previous.find(key);
        if (before == previous.end())
            continue;
        const std::uint64_t in = grownBy(now.inBytes, before->second.inBytes);
        const std::uint64_t out = grownBy(now.outBytes, before->second.outBytes);
        if (in == 0 && out == 0)
            continue;
        ByteCounts& sum = perApp[FlowKey{applicationName(key.processKey), key.remoteIP}];
        sum.inBytes += in;
        sum.outBytes += out;
        if (!seen.contains(key.remoteIP)) {
            seen.insert(key.remoteIP);
            round.addressesWithTraffic.push_back(key.remoteIP);
        }
    }
    round.deltas.reserve(perApp.size());
    for (const auto& [key, sum] : perApp) {
        const QString host = hostNames.value(key.remoteIP, key.remoteIP);
        round.deltas.push_back(FlowDelta{key.processKey, key.remoteIP, host, sum.inBytes, sum.outBytes});
    }
    return round;
}

} // namespace tallowmere
