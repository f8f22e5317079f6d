#include "monitors/NetworkFlowSource.h"

#include "core/SmallFile.h"
#include "monitors/TextScan.h"

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

std::optional<std::uint64_t> parseTcpOpens(std::string_view snmp)
{
    LineScanner lines(snmp);
    std::optional<std::string_view> names;
    while (const auto line = lines.next()) {
        if (!line->starts_with("Tcp:"))
            continue;
        if (!names) {
            names = line;
            continue;
        }
        FieldScanner name(*names), value(*line);
        std::uint64_t opens = 0;
        int found = 0;
        for (auto n = name.next(), v = value.next(); n && v; n = name.next(), v = value.next()) {
            if (*n == "ActiveOpens" || *n == "PassiveOpens") {
                const auto count = parseDecimal(*v);
                if (!count)
                    return std::nullopt;
                opens += *count;
                ++found;
            }
        }
        return found == 2 ? std::optional(opens) : std::nullopt;
    }
    return std::nullopt;
}

NetworkFlowSource::NetworkFlowSource(std::string procRoot, std::optional<std::string> cgroupRoot,
                                     NetworkSocketOwners::Clock clock)
    : snmpPath_(procRoot + "/net/snmp")
    , clock_(clock)
    , closes_(16384, attributableUid())
    , owners_(std::move(procRoot), std::move(cgroupRoot), std::move(clock))
    , uid_(attributableUid())
{
}

std::optional<std::uint64_t> NetworkFlowSource::readTcpOpens()
{
    return readSmallFile(snmpPath_, snmpText_) ? parseTcpOpens(snmpText_) : std::nullopt;
}

std::optional<FlowSample> NetworkFlowSource::sample()
{
    std::lock_guard lock(mutex_);
    const auto now = clock_();
    // Read before the dump: a connection opened while it runs makes the next sample dump again.
    const std::optional<std::uint64_t> opens = readTcpOpens();
    if (lastDump_ && opens && opens == opensAtDump_ && now - *lastDump_ < refreshInterval_ && closes_.isListening()) {
        FlowSample sample = ledger_.applyClosed(closes_.take());
        sample.droppedCloses = closes_.dropped();
        return sample;
    }
    auto records = socket_.dumpAllTcp();
    if (!records)
        return std::nullopt;
    ++dumpCount_;
    lastDump_ = now;
    opensAtDump_ = opens;
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
    lastDump_.reset();
}

void NetworkFlowSource::setRefreshInterval(std::chrono::milliseconds interval)
{
    std::lock_guard lock(mutex_);
    refreshInterval_ = interval;
}

int NetworkFlowSource::dumpCount() const
{
    std::lock_guard lock(mutex_);
    return dumpCount_;
}

int NetworkFlowSource::ownerScanCount() const
{
    std::lock_guard lock(mutex_);
    return owners_.scanCount();
}

} // namespace tallowmere
