#pragma once

#include "monitors/MonitorCommon.h"
#include "monitors/NetworkFlowLedger.h"
#include "monitors/NetworkTypes.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tallowmere {

class ReverseLookups;

// Where the monitor's figures come from. The system sources read this machine; tests hand in
// their own counters, flow tables, name lookups and clock.
struct NetworkMonitorSources {
    // Cumulative received/sent bytes of all non-loopback interfaces; main thread, once a second.
    std::function<ByteCounts()> interfaceBytes;
    // Bytes per connection owner since the previous call, none when it could not be read;
    // blocking, called from worker threads one at a time.
    std::function<std::optional<FlowSample>()> flows;
    // Host name of an address; blocking, called from worker threads.
    std::function<std::optional<QString>(const QString&)> reverseLookup;
    WallClock clock = systemNow;
    // Makes the next flows() call a baseline; called when the per-app loop starts.
    std::function<void()> restartFlows = nullptr;
    // The longest time flows() may go on reporting closed connections alone while no new
    // connection was opened.
    std::function<void(std::chrono::milliseconds)> setFlowRefreshInterval = nullptr;

    static NetworkMonitorSources system(const std::string& procRoot = "/proc", const std::string& sysRoot = "/sys");
};

// Machine-wide throughput once a second, and per-application traffic to each remote address
// in a slower loop whose deltas go to whoever set onFlowDeltas. Which loops run is decided by
// the owning service; all state lives on the main thread.
class NetworkMonitor : public QObject {
    Q_OBJECT
public:
    static constexpr double kDefaultPerAppInterval = 2.0;

    explicit NetworkMonitor(NetworkMonitorSources sources = NetworkMonitorSources::system(),
                            std::shared_ptr<Scheduler> scheduler = realScheduler(), QObject* parent = nullptr);
    ~NetworkMonitor() override;

    // Published figures: rates in bytes per second, totals since the monitor was created.
    double downloadRate() const { return downloadRate_; }
    double uploadRate() const { return uploadRate_; }
    quint64 sessionDownload() const { return sessionDownload_; }
    quint64 sessionUpload() const { return sessionUpload_; }
    const QList<NetworkHistoryPoint>& history() const { return history_; }
    // Bytes (both directions) of connections whose process could never be named, and close
    // notices the kernel or our buffer dropped, since the monitor was created.
    quint64 unattributedBytes() const { return unattributedBytes_; }
    quint64 droppedCloseNotices() const { return droppedCloses_; }

    void setOnFlowDeltas(FlowDeltasHandler handler) { onFlowDeltas_ = std::move(handler); }

    // Seconds between per-application rounds; a running loop uses a new value from its next sleep.
    double perAppInterval() const { return perAppInterval_; }
    void setPerAppInterval(double seconds);
    // Seconds within which every live connection's bytes are brought up to date; rounds in
    // between count the connections that opened or closed.
    double refreshInterval() const { return refreshInterval_; }
    void setRefreshInterval(double seconds);

    // Starting a running loop does nothing. Stopping the throughput loop forgets the interface
    // baseline; starting the per-app loop takes a new connection baseline; published figures stay.
    void startThroughput();
    void stopThroughput();
    bool isThroughputRunning() const { return !throughputTask_.isEmpty(); }
    void startPerApp();
    void stopPerApp();
    bool isPerAppRunning() const { return !perAppTask_.isEmpty(); }

    // One throughput round and one per-app round, as the loops run them.
    void runThroughputCycle();
    void processFlows(const FlowSample& sample, std::chrono::system_clock::time_point timestamp);

    // Looks the address's host name up in the background unless known or under way.
    void resolveHost(const QString& ip);
    const QHash<QString, QString>& hostNames() const { return dnsCache_; }
    bool isResolving(const QString& ip) const { return dnsInFlight_.contains(ip); }

signals:
    void downloadRateChanged();
    void uploadRateChanged();
    void sessionDownloadChanged();
    void sessionUploadChanged();
    void historyChanged();
    // A reverse lookup finished and its answer is in hostNames().
    void hostNameResolved(const QString& ip);

private:
    void runPerAppCycle(LoopTask::Done done);
    void hostResolved(const QString& ip, const std::optional<QString>& name);

    NetworkMonitorSources sources_;
    double downloadRate_ = 0;
    double uploadRate_ = 0;
    quint64 sessionDownload_ = 0;
    quint64 sessionUpload_ = 0;
    QList<NetworkHistoryPoint> history_;
    FlowDeltasHandler onFlowDeltas_;
    double perAppInterval_ = kDefaultPerAppInterval;
    double refreshInterval_ = 0;
    LoopSlot throughputTask_;
    LoopSlot perAppTask_;
    // Bumped on every stop, so a sample still in flight from an earlier run is not applied.
    quint64 perAppRun_ = 0;
    std::optional<ByteCounts> previousInterfaceBytes_;
    quint64 unattributedBytes_ = 0;
    quint64 droppedCloses_ = 0;
    QHash<QString, QString> dnsCache_;
    QSet<QString> dnsInFlight_;
    std::unique_ptr<ReverseLookups> lookups_;
};

} // namespace tallowmere
