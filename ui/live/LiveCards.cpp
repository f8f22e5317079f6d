#include "ui/live/LiveCards.h"

namespace tallowmere {

void addLiveCards(const Theme& theme, const WindowServices& services, SpecCategory category, InventoryPage& page)
{
    switch (category) {
    case SpecCategory::cpu: return addCpuLiveCards(theme, services, page);
    case SpecCategory::ram: return addMemoryLiveCards(theme, services, page);
    case SpecCategory::storage: return addDiskLiveCards(theme, services, page);
    case SpecCategory::network: return addNetworkLiveCards(theme, services, page);
    case SpecCategory::battery: return addBatteryLiveCards(theme, services, page);
    case SpecCategory::camera: return addCameraLiveCards(theme, services, page);
    default: return;
    }
}

} // namespace tallowmere
