#include "hardware/CameraMonitoringService.h"

#include "core/Detached.h"
#include "core/Property.h"
#include "hardware/CameraRules.h"

namespace tallowmere {

CameraMonitoringService::CameraMonitoringService(std::shared_ptr<VideoDeviceLayer> layer, CameraRoots roots,
                                                 std::shared_ptr<Scheduler> scheduler, QObject* parent)
    : QObject(parent)
    , scanner_(std::make_shared<const CameraScanner>(layer ? std::move(layer) : makeV4L2DeviceLayer(), std::move(roots)))
    , scheduler_(std::move(scheduler))
{
}

CameraMonitoringService::~CameraMonitoringService() = default;

void CameraMonitoringService::setPageActive(bool active)
{
    if (!assignProperty(this, pageActive_, active, &CameraMonitoringService::pageActiveChanged))
        return;
    if (active) {
        startPolling();
    } else {
        pollTask_.reset();
        ++pollGeneration_;
    }
}

QString CameraMonitoringService::statusText() const
{
    return cameraStatusText(devices_);
}

void CameraMonitoringService::startPolling()
{
    if (pollTask_)
        return;
    const quint64 generation = ++pollGeneration_;
    pollTask_ = LoopTask::startAsync(
        std::chrono::seconds(2),
        [this, generation](LoopTask::Done done) {
            runDetached(
                this, [scanner = scanner_] { return scanner->scan(); },
                [this, generation, done](std::vector<CameraDevice> devices) {
                    if (generation != pollGeneration_)
                        return;
                    replaceProperty(this, devices_, std::move(devices), &CameraMonitoringService::devicesChanged);
                    done();
                });
        },
        scheduler_);
}

} // namespace tallowmere
