#include "ui/components/AreaGraph.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tallowmere {

QPolygonF areaGraphPoints(const QList<double>& values, double maxValue, QSizeF size)
{
    const qsizetype n = values.size();
    if (n < 2)
        return {};
    const double m = maxValue <= 1 ? 1 : maxValue;
    QPolygonF points;
    points.reserve(n);
    for (qsizetype i = 0; i < n; ++i) {
        const double f = std::clamp(values[i] / m, 0.0, 1.0);
        points.append(QPointF(size.width() * qreal(i) / qreal(n - 1), size.height() * (1.0 - f)));
    }
    return points;
}

void paintAreaGraph(QPainter& painter, const QRectF& frame, const QList<double>& values, double maxValue,
                    const QColor& accent, qreal lineWidth)
{
    const QPolygonF line = areaGraphPoints(values, maxValue, frame.size()).translated(frame.topLeft());
    if (line.isEmpty())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);

    QPainterPath area;
    area.moveTo(line.first().x(), frame.bottom());
    for (const QPointF& p : line)
        area.lineTo(p);
    area.lineTo(line.last().x(), frame.bottom());
    area.closeSubpath();
    QLinearGradient fill(frame.topLeft(), frame.bottomLeft());
    fill.setColorAt(0, Theme::withOpacity(accent, 0.30));
    fill.setColorAt(1, Theme::withOpacity(accent, 0.0));
    painter.fillPath(area, fill);

    QPen pen(accent, lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setMiterLimit(10);
    painter.setPen(pen);
    painter.drawPolyline(line);
    painter.restore();
}

AreaGraph::AreaGraph(const Theme& theme, QColor accent, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , accent_(accent)
{
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

void AreaGraph::setValues(QList<double> values)
{
    if (values == values_)
        return;
    values_ = std::move(values);
    update();
}

void AreaGraph::setMaxValue(double maxValue)
{
    if (maxValue == maxValue_)
        return;
    maxValue_ = maxValue;
    update();
}

void AreaGraph::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (isCollecting()) {
        painter.setFont(Theme::font(10));
        painter.setPen(theme_.colors.tertiaryText);
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("Collecting data\u2026"));
        return;
    }
    // Half the stroke inside the frame so the line at 0 and at the top is not clipped.
    paintAreaGraph(painter, QRectF(rect()).adjusted(0, 1, 0, -1), values_, maxValue_, accent_);
}

} // namespace tallowmere
