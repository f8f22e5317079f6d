#pragma once

// The 90-day usage history the store and history-card benchmarks read: 50 application/address
// pairs in every minute up to kHistoryFileNow (about 6.5 million rows), built once in the
// temporary folder and reused by later runs.
#include "history/NetworkUsageStore.h"

#include <QString>

#include <cstdint>

namespace tallowmere {

inline constexpr std::int64_t kHistoryFileNow = 1'700'000'000;

// The folder holding the history file, built with fast bulk settings when missing or
// incomplete. It is written as minute rows only, so the first store to open it fills the roll-up.
QString usageHistoryDirectory();

// One store over that file for the whole run, its clock stopped at kHistoryFileNow, returned
// once the roll-up is complete (its filling time is printed when it had to be done).
NetworkUsageStore& usageHistoryStore();

} // namespace tallowmere
