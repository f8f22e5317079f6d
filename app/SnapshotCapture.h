#pragma once

#include "app/SnapshotGatherer.h"

#include <QByteArray>

#include <chrono>

namespace tallowmere {

// One snapshot for `tallowmere --snapshot`: switches the services' serverActive flags on,
// runs the event loop until every given monitor has published a fresh sample (so rates are
// real rates, not the zeros of a first reading), at most `patience`, restores the flags and
// returns the encoded document, as GET /stats would answer it. Main thread only.
QByteArray captureSnapshot(SnapshotGatherer& gatherer,
                           std::chrono::milliseconds patience = std::chrono::milliseconds(4000));

} // namespace tallowmere
