#include "ui/window/WindowServices.h"

#include "ui/pages/LinuxTexts.h"

namespace tallowmere {

PageInputs gatherMachineInputs(SystemInfo info)
{
    return PageInputs{
        .info = std::move(info),
        .uptimeSeconds = linuxTexts::uptimeSeconds(),
        .rootFileSystemType = linuxTexts::rootFileSystemType(),
        .battery = BatteryInfo::current(),
    };
}

} // namespace tallowmere
