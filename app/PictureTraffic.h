#pragma once

#include "history/NetworkUsageTypes.h"

namespace tallowmere {

class NetworkUsageStore;

// Writes a week of made-up traffic up to `now` into `store`, the way the monitor's rounds
// would: a few desktop applications with their servers, quiet nights and busy evenings, half
// hours over the week and minutes over the last hour. Only for pictures, on a store of their own.
void recordPictureWeek(NetworkUsageStore& store, WallTime now);

} // namespace tallowmere
