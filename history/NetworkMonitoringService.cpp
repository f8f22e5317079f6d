#include "history/NetworkMonitoringService.h"

#include "core/Property.h"

#include <QPointer>

namespace tallowmere {

NetworkMonitoringService::NetworkMonitoringService(std::unique_ptr<NetworkUsageStore> store,
                                                   std::unique_ptr<NetworkMonitor> monitor, QObject* parent)
    : MonitoringService(parent)
    , usageStore_(store ? std::move(store) : std::make_unique<NetworkUsageStore>())
    , monitor_(monitor ? std::move(monitor) : std::make_unique<NetworkMonitor>())
{
    QPointer<NetworkMonitoringService> self(this);
    monitor_->setOnFlowDeltas([self](const std::vector<FlowDelta>& deltas, WallTime timestamp) {
        if (self)
            self->storeDeltas(deltas, timestamp);
    });
}

NetworkMonitoringService::~NetworkMonitoringService()
{
    // The loops stop with the monitor; the store then finishes what it was given.
    monitor_.reset();
}

void NetworkMonitoringService::setRecordingActive(bool active)
{
    assignProperty(this, recordingActive_, active, &NetworkMonitoringService::recordingActiveChanged);
}

bool NetworkMonitoringService::isActive() const
{
    return MonitoringService::isActive() || recordingActive_;
}

void NetworkMonitoringService::storeDeltas(const std::vector<FlowDelta>& deltas, WallTime timestamp)
{
    // Rounds run for the live page alone are shown, not stored.
    if (recordingActive_)
        usageStore_->record(deltas, timestamp);
}

void NetworkMonitoringService::updateMonitoring()
{
    if (isActive())
        monitor_->startThroughput();
    else
        monitor_->stopThroughput();

    if (!pageActive() && !recordingActive_) {
        monitor_->stopPerApp();
        return;
    }
    const double interval = recordingActive_ ? kRecordingInterval : kPageInterval;
    if (monitor_->perAppInterval() != interval)
        monitor_->setPerAppInterval(interval);
    const double refresh = pageActive() ? kPageInterval : kRecordingRefresh;
    if (monitor_->refreshInterval() != refresh)
        monitor_->setRefreshInterval(refresh);
    monitor_->startPerApp();
}

} // namespace tallowmere
