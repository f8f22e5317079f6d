#pragma once

#include "monitors/DiskMonitor.h"
#include "monitors/MonitoringService.h"

namespace tallowmere {

class DiskMonitoringService : public MonitorOwningService<DiskMonitor> {
public:
    explicit DiskMonitoringService(std::unique_ptr<DiskMonitor> monitor = std::make_unique<DiskMonitor>(),
                                   QObject* parent = nullptr)
        : MonitorOwningService(std::move(monitor), parent)
    {
    }
};

} // namespace tallowmere
