#pragma once

#include "core/LoopTask.h"
#include "hardware/CameraDevice.h"
#include "hardware/CameraScanner.h"

#include <QObject>

#include <memory>
#include <vector>

namespace tallowmere {

// The machine's cameras, refreshed every 2 s while the camera page is on screen and not at
// all otherwise. Each pass runs off the main thread and is published on it.
class CameraMonitoringService : public QObject {
    Q_OBJECT
public:
    // A null `layer` means the kernel's video interface.
    explicit CameraMonitoringService(std::shared_ptr<VideoDeviceLayer> layer = {}, CameraRoots roots = {},
                                     std::shared_ptr<Scheduler> scheduler = realScheduler(), QObject* parent = nullptr);
    ~CameraMonitoringService() override;

    const std::vector<CameraDevice>& devices() const { return devices_; }
    bool pageActive() const { return pageActive_; }
    bool isPolling() const { return pollTask_ != nullptr; }

    // Showing the page lists the cameras at once and then every 2 s; hiding it stops that and
    // keeps the last list.
    void setPageActive(bool active);

    QString statusText() const;

signals:
    void devicesChanged();
    void pageActiveChanged();

private:
    void startPolling();

    std::shared_ptr<const CameraScanner> scanner_;
    std::shared_ptr<Scheduler> scheduler_;
    std::vector<CameraDevice> devices_;
    std::unique_ptr<LoopTask> pollTask_;
    bool pageActive_ = false;
    // Tells a pass that finishes after the page went away not to publish.
    quint64 pollGeneration_ = 0;
};

} // namespace tallowmere
