#include "ui/components/UsageBarGraph.h"

#include <QPainter>

#include <algorithm>

namespace tallowmere {

QList<UsageBarGeometry> usageBarGeometry(const QList<UsageBar>& bars, QSizeF size)
{
    std::uint64_t peak = 0;
    for (const UsageBar& bar : bars)
        peak = std::max(peak, bar.in + bar.out);
    if (bars.isEmpty() || peak == 0)
        return {};
    const qreal slot = size.width() / qreal(bars.size());
    // A gap between bars while they are wide enough to afford one.
    const qreal gap = slot >= 4 ? std::min(slot * 0.25, 3.0) : 0;
    QList<UsageBarGeometry> rects;
    rects.reserve(bars.size());
    for (qsizetype i = 0; i < bars.size(); ++i) {
        const qreal x = slot * qreal(i) + gap / 2;
        const qreal inHeight = size.height() * double(bars[i].in) / double(peak);
        const qreal outHeight = size.height() * double(bars[i].out) / double(peak);
        const qreal inTop = size.height() - inHeight;
        rects.append({QRectF(x, inTop, slot - gap, inHeight), QRectF(x, inTop - outHeight, slot - gap, outHeight)});
    }
    return rects;
}

UsageBarGraph::UsageBarGraph(const Theme& theme, QColor inColor, QColor outColor, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , inColor_(inColor)
    , outColor_(outColor)
{
    setMinimumHeight(120);
}

void UsageBarGraph::setBars(QList<UsageBar> bars, QString label)
{
    if (bars == bars_ && label == label_)
        return;
    bars_ = std::move(bars);
    label_ = std::move(label);
    update();
}

void UsageBarGraph::paintEvent(QPaintEvent*)
{
    // The label sits in a band of its own above the bars, so the tallest bar never hides it.
    const int labelHeight = 18;
    const QRectF frame = QRectF(rect()).adjusted(0, labelHeight, 0, 0);
    const QList<UsageBarGeometry> parts = usageBarGeometry(bars_, frame.size());
    if (parts.isEmpty())
        return;
    QPainter painter(this);
    painter.setPen(QPen(theme_.colors.separator, 1));
    painter.drawLine(QPointF(frame.left(), frame.bottom() - 0.5), QPointF(frame.right(), frame.bottom() - 0.5));
    painter.setPen(Qt::NoPen);
    for (const UsageBarGeometry& part : parts) {
        painter.fillRect(part.in.translated(frame.topLeft()), inColor_);
        painter.fillRect(part.out.translated(frame.topLeft()), outColor_);
    }
    painter.setPen(theme_.colors.secondaryText);
    painter.setFont(Theme::font(9.5));
    painter.drawText(QRectF(0, 0, width(), labelHeight), Qt::AlignLeft | Qt::AlignTop, label_);
}

} // namespace tallowmere
