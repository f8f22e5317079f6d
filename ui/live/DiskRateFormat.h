#pragma once

#include <QString>

namespace tallowmere {

// A disk throughput in powers of 1024 up to GB/s: one decimal below 100 ("99.9 KB/s"), none
// from 100 ("100 KB/s") and never for whole bytes ("512 B/s"). Negative rates read as 0.
QString formatDiskRate(double bytesPerSecond);

} // namespace tallowmere
