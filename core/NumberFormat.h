#pragma once

#include <optional>
#include <string>

namespace tallowmere {

// Every number the program shows or serves is written here, always with a dot as the decimal
// separator whatever the user's locale, because JSON, metrics and the figures in the strip must
// read the same everywhere.

// `value` rounded to `decimals` (0 to 20) places, as printf's "%.Nf" prints it in the C locale.
std::string fixedNumber(double value, int decimals);

// The shortest text that reads back as exactly `value`; nothing for NaN and the infinities.
std::optional<std::string> shortestNumber(double value);

} // namespace tallowmere
