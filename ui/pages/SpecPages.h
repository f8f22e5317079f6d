#pragma once

#include "hardware/SystemInfo.h"
#include "power/BatteryInfo.h"
#include "ui/pages/PageRecord.h"

#include <optional>

namespace tallowmere {

// The facts an inventory page is made from, gathered once and again on Refresh.
struct PageInputs {
    SystemInfo info{};
    std::optional<qint64> uptimeSeconds{};
    std::optional<QString> rootFileSystemType{};
    // The battery as last read; absent until the battery service has read it.
    std::optional<BatteryInfo> battery{};
};

// The inventory part of a page (its live cards come separately).
PageRecord makeSpecPage(SpecCategory category, const PageInputs& inputs);

// "Up 5:07", "Up 1 day, 0:00", "Up 3 days, 4:05".
QString uptimeText(qint64 seconds);
// "Integrated graphics" for fewer than two GPUs, else "3 GPUs detected".
QString graphicsSummary(const QStringList& gpus);
// "%.1f GB" in the C locale.
QString gigabytesText(double gigabytes);

} // namespace tallowmere
