#include "monitors/MonitoringService.h"

#include "core/Property.h"

namespace tallowmere {

void MonitoringService::setPageActive(bool active)
{
    assignProperty(this, pageActive_, active, &MonitoringService::pageActiveChanged);
}

void MonitoringService::setMenuBarActive(bool active)
{
    assignProperty(this, menuBarActive_, active, &MonitoringService::menuBarActiveChanged);
}

void MonitoringService::setServerActive(bool active)
{
    assignProperty(this, serverActive_, active, &MonitoringService::serverActiveChanged);
}

} // namespace tallowmere
