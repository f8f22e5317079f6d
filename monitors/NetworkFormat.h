#pragma once

#include <QString>

namespace tallowmere {

// Byte amounts in powers of 1024: "512 B", "1.5 KB", "20 KB". Callers append "/s" for rates.
QString formatBytes(double value);

// The same scaling for tight spaces: "512B", "1.5K", "20K".
QString formatBytesCompact(double value);

} // namespace tallowmere
