#include "monitors/NetworkFormat.h"

#include "core/NumberFormat.h"

#include <array>

namespace tallowmere {

namespace {

QString scaled(double value, const std::array<const char*, 5>& units, const char* separator)
{
    if (!(value > 0))
        value = 0;
    std::size_t unit = 0;
    while (value >= 1024 && unit < 4) {
        value /= 1024;
        ++unit;
    }
    const std::string number = fixedNumber(value, (unit > 0 && value < 10) ? 1 : 0);
    return QLatin1String(number) + QLatin1String(separator) + QLatin1String(units[unit]);
}

} // namespace

QString formatBytes(double value)
{
    return scaled(value, {"B", "KB", "MB", "GB", "TB"}, " ");
}

QString formatBytesCompact(double value)
{
    return scaled(value, {"B", "K", "M", "G", "T"}, "");
}

} // namespace tallowmere
