#include "ui/live/DiskRateFormat.h"

#include "core/NumberFormat.h"

#include <array>

namespace tallowmere {

QString formatDiskRate(double bytesPerSecond)
{
    static constexpr std::array<const char*, 4> units{"B/s", "KB/s", "MB/s", "GB/s"};
    double value = bytesPerSecond > 0 ? bytesPerSecond : 0;
    std::size_t unit = 0;
    while (value >= 1024 && unit + 1 < units.size()) {
        value /= 1024;
        ++unit;
    }
    const int decimals = (unit == 0 || value >= 100) ? 0 : 1;
    return QLatin1String(fixedNumber(value, decimals)) + QLatin1Char(' ') + QLatin1String(units[unit]);
}

} // namespace tallowmere
