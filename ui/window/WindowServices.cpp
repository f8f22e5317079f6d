#include "ui/window/WindowServices.h"

#include "ui/pages/LinuxTexts.h"

namespace tallowmere {

PageInputs gatherMachineInputs()
{
    return PageInputs{
        .info = SystemInfo::current(),
        .uptimeSeconds = linuxTexts::uptimeSeconds(),
        .rootFileSystemType = linuxTexts::rootFileSystemType(),
        .battery = BatteryInfo::current(),
    };
}

} // namespace tallowmere
