#include "monitors/NetworkMonitor.h"

#include "core/Detached.h"
#include "core/Log.h"
#include "core/Property.h"
#include "monitors/NetworkCgroupProcesses.h"
#include "monitors/NetworkFlowSource.h"
#include "monitors/NetworkFlows.h"
#include "monitors/NetworkInterfaceCounters.h"
#include "monitors/NetworkReverseLookup.h"

#include <cmath>
#include <memory>

namespace tallowmere {

namespace {

constexpr std::chrono::milliseconds kThroughputPeriod{1000};

std::chrono::milliseconds toPeriod(double seconds)
{
    return std::chrono::milliseconds(std::llround(std::max(seconds, 0.0) * 1000.0));
}

std::uint64_t grownBy(std::uint64_t now, std::uint64_t before)
{
    return now >= before ? now - before : 0;
}

} // namespace

NetworkMonitorSources NetworkMonitorSources::system(const std::string& procRoot, const std::string& sysRoot)
{
    auto counters = std::make_shared<NetworkInterfaceCounters>(procRoot);
    auto flows = std::make_shared<NetworkFlowSource>(procRoot, NetworkCgroupProcesses::mountBelow(sysRoot));
    NetworkMonitorSources sources;
    sources.interfaceBytes = [counters] { return counters->read(); };
    sources.flows = [flows] { return flows->sample(); };
    sources.restartFlows = [flows] { flows->restart(); };
    sources.setFlowRefreshInterval = [flows](std::chrono::milliseconds interval) { flows->setRefreshInterval(interval); };
    sources.reverseLookup = [](const QString& ip) { return tallowmere::reverseLookup(ip); };
    return sources;
}

NetworkMonitor::NetworkMonitor(NetworkMonitorSources sources, std::shared_ptr<Scheduler> scheduler, QObject* parent)
    : QObject(parent)
    , sources_(std::move(sources))
    , throughputTask_(scheduler)
    , perAppTask_(scheduler)
{
}

NetworkMonitor::~NetworkMonitor() = default;

void NetworkMonitor::setPerAppInterval(double seconds)
{
    perAppInterval_ = seconds;
    if (LoopTask* task = perAppTask_.task())
        task->setPeriod(toPeriod(seconds));
}

void NetworkMonitor::setRefreshInterval(double seconds)
{
    refreshInterval_ = seconds;
    if (sources_.setFlowRefreshInterval)
        sources_.setFlowRefreshInterval(toPeriod(seconds));
}

void NetworkMonitor::startThroughput()
{
    throughputTask_.startIfEmpty(kThroughputPeriod, [this] { runThroughputCycle(); });
}

void NetworkMonitor::stopThroughput()
{
    throughputTask_.stop();
    previousInterfaceBytes_.reset();
}

void NetworkMonitor::startPerApp()
{
    if (perAppTask_.isEmpty() && sources_.restartFlows)
        sources_.restartFlows();
    perAppTask_.startAsyncIfEmpty(toPeriod(perAppInterval_), [this](LoopTask::Done done) { runPerAppCycle(std::move(done)); });
}

void NetworkMonitor::stopPerApp()
{
    perAppTask_.stop();
    ++perAppRun_;
}

void NetworkMonitor::runThroughputCycle()
{
    const ByteCounts now = sources_.interfaceBytes();
    if (!previousInterfaceBytes_) {
        previousInterfaceBytes_ = now;
        return;
    }
    // The loop sleeps one second, so the deltas are the rates.
    const std::uint64_t in = grownBy(now.inBytes, previousInterfaceBytes_->inBytes);
    const std::uint64_t out = grownBy(now.outBytes, previousInterfaceBytes_->outBytes);
    assignProperty(this, downloadRate_, static_cast<double>(in), &NetworkMonitor::downloadRateChanged);
    assignProperty(this, uploadRate_, static_cast<double>(out), &NetworkMonitor::uploadRateChanged);
    assignProperty(this, sessionDownload_, sessionDownload_ + in, &NetworkMonitor::sessionDownloadChanged);
    assignProperty(this, sessionUpload_, sessionUpload_ + out, &NetworkMonitor::sessionUploadChanged);
    replaceProperty(this, history_, appendedHistory(history_, downloadRate_, uploadRate_),
                    &NetworkMonitor::historyChanged);
    previousInterfaceBytes_ = now;
}

void NetworkMonitor::runPerAppCycle(LoopTask::Done done)
{
    using Sample = std::pair<std::optional<FlowSample>, std::chrono::system_clock::time_point>;
    runDetached(
        this,
        [flows = sources_.flows, clock = sources_.clock] {
            std::optional<FlowSample> sample = flows();
            return Sample{std::move(sample), clock()};
        },
        [this, run = perAppRun_, done = std::move(done)](Sample sample) {
            // A failed sample changes nothing: the next good one covers both rounds.
            if (run == perAppRun_ && sample.first)
                processFlows(*sample.first, sample.second);
            done();
        });
}

void NetworkMonitor::processFlows(const FlowSample& sample, std::chrono::system_clock::time_point timestamp)
{
    const quint64 unattributed = sample.unattributed.inBytes + sample.unattributed.outBytes;
    if (unattributed > 0 && unattributedBytes_ == 0)
        logInfo(QStringLiteral("some connections closed before their process could be found; their bytes are "
                               "counted as not attributable (first: %1 bytes)")
                    .arg(unattributed));
    unattributedBytes_ += unattributed;
    if (sample.droppedCloses > droppedCloses_ && droppedCloses_ == 0)
        logWarning(QStringLiteral("notices of closing connections were dropped under load; their last bytes are lost"));
    droppedCloses_ = std::max<quint64>(droppedCloses_, sample.droppedCloses);

    FlowRound round = perAppRound(sample.deltas, dnsCache_);
    for (const QString& ip : round.addressesWithTraffic)
        resolveHost(ip);
    if (!round.deltas.empty() && onFlowDeltas_)
        onFlowDeltas_(round.deltas, timestamp);
}

void NetworkMonitor::resolveHost(const QString& ip)
{
    if (ip.isEmpty() || dnsCache_.contains(ip) || dnsInFlight_.contains(ip) || !sources_.reverseLookup)
        return;
    dnsInFlight_.insert(ip);
    if (!lookups_) {
        lookups_ = std::make_unique<ReverseLookups>(
            sources_.reverseLookup, [this](const QString& ip, const std::optional<QString>& name) { hostResolved(ip, name); });
    }
    lookups_->start(ip);
}

void NetworkMonitor::hostResolved(const QString& ip, const std::optional<QString>& name)
{
    // A failed lookup caches the address itself, so it is never asked again.
    dnsCache_.insert(ip, name.value_or(ip));
    dnsInFlight_.remove(ip);
    emit hostNameResolved(ip);
}

} // namespace tallowmere
