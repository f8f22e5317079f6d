#pragma once

#include "monitors/NetworkTypes.h"
#include "monitors/SockDiagRecord.h"

#include <QHash>
#include <QString>

#include <functional>
#include <vector>

namespace tallowmere {

// The application a process label belongs to: "Safari.812" gives "Safari". A label whose text
// after its last dot is not all digits is an application name already.
QString applicationName(const QString& processLabel);

// Whether a remote address names a peer worth recording: not empty, no wildcard ("*",
// "0.0.0.0", "::") and not one of the two canonical loopback addresses 127.0.0.1 and ::1.
// Other loopback forms such as 127.0.0.2 count.
bool isRecordedRemoteAddress(const QString& address);

// Cumulative counters per (process label, remote address) from one dump of sockets. Sockets
// without counters, without an owner `labelOf` knows, or with an unrecorded peer are left
// out; several connections of one process to one address are summed.
using SocketLabeller = std::function<const QString*(std::uint64_t inode)>;
FlowTable buildFlowTable(const std::vector<SockDiagRecord>& records, const SocketLabeller& labelOf);

// One round of per-application accounting: counters that grew since `previous` become deltas,
// summed per (application, address). A key seen for the first time only sets its baseline;
// a counter that went backwards counts 0 in that direction.
struct FlowRound {
    std::vector<FlowDelta> deltas;
    std::vector<QString> addressesWithTraffic;  // every address that produced a delta, once
};
FlowRound computeFlowRound(const FlowTable& previous, const FlowTable& current,
                           const QHash<QString, QString>& hostNames);

} // namespace tallowmere
