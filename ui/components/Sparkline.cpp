#include "ui/components/Sparkline.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tallowmere {

namespace {
qreal heightOf(double percent, qreal height)
{
    return height * (1.0 - std::clamp(percent / 100.0, 0.0, 1.0));
}
} // namespace

QPolygonF sparklinePoints(const QList<double>& values, QSizeF size, int sampleCount)
{
    const qsizetype n = std::min<qsizetype>(values.size(), std::max(sampleCount, 0));
    const qsizetype first = values.size() - n;
    const qreal w = size.width();
    const qreal h = size.height();
    if (n == 0)
        return {QPointF(0, h / 2), QPointF(w, h / 2)};
    if (n == 1) {
        const qreal y = heightOf(values[first], h);
        return {QPointF(0, y), QPointF(w, y)};
    }
    QPolygonF points;
    points.reserve(n);
    for (qsizetype i = 0; i < n; ++i)
        points.append(QPointF(w * qreal(i) / qreal(n - 1), heightOf(values[first + i], h)));
    return points;
}

void paintSparkline(QPainter& painter, const QRectF& frame, const QList<double>& values, const QColor& color,
                    qreal lineWidth, int sampleCount)
{
    const QPolygonF points = sparklinePoints(values, frame.size(), sampleCount).translated(frame.topLeft());
    QPen pen(color, lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    pen.setMiterLimit(10);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(points);
    painter.restore();
}

} // namespace tallowmere
