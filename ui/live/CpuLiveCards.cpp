#include "ui/live/LiveCards.h"

namespace tallowmere {

void addCpuLiveCards(const Theme&, const WindowServices&, InventoryPage&)
{
}

} // namespace tallowmere
