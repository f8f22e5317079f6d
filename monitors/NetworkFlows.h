#pragma once

#include "monitors/NetworkTypes.h"

#include <QHash>
#include <QString>

#include <vector>

namespace tallowmere {

// The application a process label belongs to: "Safari.812" gives "Safari". A label whose text
// after its last dot is not all digits is an application name already.
QString applicationName(const QString& processLabel);

// Whether a remote address names a peer worth recording: not empty, no wildcard ("*",
// "0.0.0.0", "::") and not one of the two canonical loopback addresses 127.0.0.1 and ::1.
// Other loopback forms such as 127.0.0.2 count.
bool isRecordedRemoteAddress(const QString& address);

// One round of per-application accounting: the round's bytes per (process label, address)
// summed per (application, address), with the host names known so far.
struct FlowRound {
    std::vector<FlowDelta> deltas;
    std::vector<QString> addressesWithTraffic;  // every address that produced a delta, once
};
FlowRound perAppRound(const FlowTable& deltas, const QHash<QString, QString>& hostNames);

} // namespace tallowmere
