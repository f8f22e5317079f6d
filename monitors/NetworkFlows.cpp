#include "monitors/NetworkFlows.h"

#include <QSet>

namespace tallowmere {

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

FlowRound perAppRound(const FlowTable& deltas, const QHash<QString, QString>& hostNames)
{
    FlowTable perApp;
    QSet<QString> seen;
    FlowRound round;
    for (const auto& [key, grown] : deltas) {
        if (grown.inBytes == 0 && grown.outBytes == 0)
            continue;
        ByteCounts& sum = perApp[FlowKey{applicationName(key.processKey), key.remoteIP}];
        sum.inBytes += grown.inBytes;
        sum.outBytes += grown.outBytes;
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
