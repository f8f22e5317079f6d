#include "core/NumberFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace tallowmere {

std::string fixedNumber(double value, int decimals)
{
    if (!std::isfinite(value))
        return std::isnan(value) ? "nan" : (value > 0 ? "inf" : "-inf");
    // to_chars never consults the locale; 1e308 with 20 decimals still fits.
    char buffer[400];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed,
                                      std::clamp(decimals, 0, 20));
    return std::string(buffer, result.ptr);
}

std::optional<std::string> shortestNumber(double value)
{
    if (!std::isfinite(value))
        return std::nullopt;
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

} // namespace tallowmere
