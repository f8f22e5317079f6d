#include "ui/live/LiveCards.h"

namespace tallowmere {

void addMemoryLiveCards(const Theme&, const WindowServices&, InventoryPage&)
{
}

} // namespace tallowmere
