#include "ui/live/LiveCards.h"

namespace tallowmere {

void addNetworkLiveCards(const Theme&, const WindowServices&, InventoryPage&)
{
}

} // namespace tallowmere
