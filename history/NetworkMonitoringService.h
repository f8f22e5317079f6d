#pragma once

#include "history/NetworkUsageStore.h"
#include "monitors/MonitoringService.h"
#include "monitors/NetworkMonitor.h"

#include <memory>

namespace tallowmere {

// Owns the network monitor and the usage store and runs the monitor's two loops for whoever
// needs them: the throughput loop for any consumer, the per-application loop for the Network
// page (every 2 s) or, faster, for background recording. Deltas reach the store only while
// recording is on.
class NetworkMonitoringService : public MonitoringService {
    Q_OBJECT
public:
    static constexpr double kPageInterval = 2.0;
    // A connection that lives longer than one round is always seen alive, so its owner is
    // known when it closes. A round dumps the sockets only when a connection was opened since
    // the last dump, or after kRecordingRefresh (the page wants its figures every kPageInterval);
    // other rounds cost a small file read.
    static constexpr double kRecordingInterval = 1.0;
    static constexpr double kRecordingRefresh = 10.0;

    // Null arguments get the real ones: the machine's network and the store in
    // NetworkUsageStore::defaultDirectory().
    explicit NetworkMonitoringService(std::unique_ptr<NetworkUsageStore> store = nullptr,
                                      std::unique_ptr<NetworkMonitor> monitor = nullptr, QObject* parent = nullptr);
    ~NetworkMonitoringService() override;

    NetworkMonitor& monitor() { return *monitor_; }
    NetworkUsageStore& usageStore() { return *usageStore_; }

    bool recordingActive() const { return recordingActive_; }
    void setRecordingActive(bool active);

    bool isActive() const override;
    void updateMonitoring() override;

signals:
    void recordingActiveChanged();

private:
    void storeDeltas(const std::vector<FlowDelta>& deltas, WallTime timestamp);

    // The store outlives the monitor, so a last round of deltas always finds it.
    std::unique_ptr<NetworkUsageStore> usageStore_;
    std::unique_ptr<NetworkMonitor> monitor_;
    bool recordingActive_ = false;
};

} // namespace tallowmere
