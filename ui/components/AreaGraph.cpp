#include "ui/components/AreaGraph.h"

#include <QLinearGradient>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

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

void AreaGraph::setAxisTicks(QList<double> ticks)
{
    ticks_ = std::move(ticks);
    update();
}

// The grid and its labels; returns the frame left for the graph.
QRectF AreaGraph::paintAxis(QPainter& painter)
{
    const QFont font = Theme::font(8);
    const QFontMetricsF metrics(font);
    QStringList labels;
    qreal gutter = 0;
    for (double tick : ticks_) {
        labels.append(QString::number(tick, 'f', 0));
        gutter = std::max(gutter, metrics.horizontalAdvance(labels.last()));
    }
    // Room for half a label above the top line and below the bottom one.
    const qreal half = metrics.height() / 2;
    const QRectF frame = QRectF(rect()).adjusted(0, half, -(gutter + 6), -half);
    const double m = maxValue_ <= 1 ? 1 : maxValue_;
    painter.setFont(font);
    for (qsizetype i = 0; i < ticks_.size(); ++i) {
        const qreal y = std::round(frame.bottom() - frame.height() * std::clamp(ticks_[i] / m, 0.0, 1.0)) + 0.5;
        painter.setPen(QPen(theme_.colors.separator, 1));
        painter.drawLine(QPointF(frame.left(), y), QPointF(frame.right(), y));
        painter.setPen(theme_.colors.tertiaryText);
        painter.drawText(QRectF(frame.right() + 6, y - half, gutter, 2 * half), Qt::AlignRight | Qt::AlignVCenter, labels[i]);
    }
    return frame;
}

void AreaGraph::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // Half the stroke inside the frame so the line at 0 and at the top is not clipped.
    const QRectF frame = ticks_.isEmpty() ? QRectF(rect()).adjusted(0, 1, 0, -1) : paintAxis(painter);
    if (isCollecting()) {
        painter.setFont(Theme::font(10));
        painter.setPen(theme_.colors.tertiaryText);
        painter.drawText(frame, Qt::AlignCenter, QStringLiteral("Collecting data\u2026"));
        return;
    }
    paintAreaGraph(painter, frame, values_, maxValue_, accent_);
}

} // namespace tallowmere
