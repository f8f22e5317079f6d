#pragma once

#include "monitors/MemoryMonitor.h"
#include "monitors/MonitoringService.h"

namespace tallowmere {

// Both memory loops run together: the per-program list is wanted by every consumer.
class MemoryMonitoringService : public MonitorOwningService<MemoryMonitor> {
public:
    explicit MemoryMonitoringService(std::unique_ptr<MemoryMonitor> monitor = std::make_unique<MemoryMonitor>(),
                                     QObject* parent = nullptr)
        : MonitorOwningService(std::move(monitor), parent)
    {
    }

    void updateMonitoring() override
    {
        MonitorOwningService::updateMonitoring();
        if (isActive())
            monitor().startPerProcessMonitoring();
        else
            monitor().stopPerProcessMonitoring();
    }
};

} // namespace tallowmere
