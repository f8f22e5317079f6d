#pragma once

#include <QColor>
#include <QList>
#include <QPolygonF>
#include <QRectF>

class QPainter;

namespace tallowmere {

// A small trend line of percentages: the last `sampleCount` values spread across `size`, 0 at
// the bottom and 100 at the top, values outside clamped to the edges. No values give a flat
// line at mid-height, one value a flat line at its own height.
QPolygonF sparklinePoints(const QList<double>& values, QSizeF size, int sampleCount);

// Strokes the sparkline inside `frame` with round caps and joins.
void paintSparkline(QPainter& painter, const QRectF& frame, const QList<double>& values, const QColor& color,
                    qreal lineWidth = 1.4, int sampleCount = 10);

} // namespace tallowmere
