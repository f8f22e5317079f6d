#pragma once

#include "monitors/CPUMonitor.h"
#include "monitors/MonitoringService.h"

namespace tallowmere {

// The CPU page switches the per-process loop itself; this service switches the main loop.
class CPUMonitoringService : public MonitorOwningService<CPUMonitor> {
public:
    explicit CPUMonitoringService(std::unique_ptr<CPUMonitor> monitor = std::make_unique<CPUMonitor>(),
                                  QObject* parent = nullptr)
        : MonitorOwningService(std::move(monitor), parent)
    {
    }
};

} // namespace tallowmere
