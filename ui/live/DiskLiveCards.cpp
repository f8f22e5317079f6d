#include "ui/live/LiveCards.h"

namespace tallowmere {

void addDiskLiveCards(const Theme&, const WindowServices&, InventoryPage&)
{
}

} // namespace tallowmere
