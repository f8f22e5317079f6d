#include "ui/components/RateHistoryGraph.h"

#include "ui/components/AreaGraph.h"

#include <QPainter>

#include <algorithm>

namespace tallowmere {

RateHistoryGraph::RateHistoryGraph(const Theme& theme, QColor firstColor, QColor secondColor, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , firstColor_(firstColor)
    , secondColor_(secondColor)
{
    setMinimumHeight(72);
}

void RateHistoryGraph::setSeries(QList<double> first, QList<double> second)
{
    if (first == first_ && second == second_)
        return;
    first_ = std::move(first);
    second_ = std::move(second);
    update();
}

double RateHistoryGraph::scale() const
{
    double top = 1;
    for (const QList<double>* series : {&first_, &second_})
        for (double v : *series)
            top = std::max(top, v);
    return top;
}

void RateHistoryGraph::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (isCollecting()) {
        painter.setFont(Theme::font(10));
        painter.setPen(theme_.colors.tertiaryText);
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("Collecting data\u2026"));
        return;
    }
    // Quarter lines give the eye a measure; the frame keeps half a stroke free at top and bottom.
    const QRectF frame = QRectF(rect()).adjusted(0, 1, 0, -1);
    painter.setPen(QPen(theme_.colors.separator, 1, Qt::DotLine));
    for (int i = 1; i < 4; ++i) {
        const qreal y = std::round(frame.top() + frame.height() * i / 4.0) + 0.5;
        painter.drawLine(QPointF(frame.left(), y), QPointF(frame.right(), y));
    }
    const double top = scale();
    paintAreaGraph(painter, frame, first_, top, firstColor_);
    paintAreaGraph(painter, frame, second_, top, secondColor_);
}

} // namespace tallowmere
