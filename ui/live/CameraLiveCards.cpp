#include "ui/live/LiveCards.h"

namespace tallowmere {

void addCameraLiveCards(const Theme&, const WindowServices&, InventoryPage&)
{
}

} // namespace tallowmere
