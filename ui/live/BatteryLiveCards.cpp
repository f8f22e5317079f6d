#include "ui/live/LiveCards.h"

namespace tallowmere {

void addBatteryLiveCards(const Theme&, const WindowServices&, InventoryPage&)
{
}

} // namespace tallowmere
