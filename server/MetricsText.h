#pragma once

#include "server/StatsSnapshot.h"

#include <QByteArray>

namespace tallowmere {

// The snapshot's figures in the Prometheus text exposition format (version 0.0.4), so that
// a scraper can collect them from many machines. Sizes are given in bytes and times in
// seconds, as scrapers expect; texts (model, health, power source) become labels of
// "_info" series whose value is 1. Absent figures have no series.
QByteArray metricsText(const StatsSnapshot& snapshot);

QByteArray metricsContentType();

// A label value with backslash, double quote and line feed escaped.
QByteArray escapeLabelValue(const QString& value);

} // namespace tallowmere
