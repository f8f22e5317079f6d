#include "ui/components/Switch.h"

#include <QPainter>

namespace tallowmere {

Switch::Switch(const Theme& theme, QWidget* parent)
    : QAbstractButton(parent)
    , theme_(theme)
{
    setCheckable(true);
    setCursor(Qt::PointingHandCursor);
    setFixedSize(sizeHint());
}

void Switch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF track = QRectF(rect()).adjusted(1, 1, -1, -1);
    const qreal radius = track.height() / 2;
    QColor fill = isChecked() ? theme_.colors.accent : theme_.colors.track;
    if (!isEnabled())
        fill = Theme::withOpacity(fill, 0.5);
    painter.setBrush(fill);
    painter.drawRoundedRect(track, radius, radius);
    const qreal knob = track.height() - 4;
    const qreal x = isChecked() ? track.right() - 2 - knob : track.left() + 2;
    painter.setBrush(QColor(Qt::white));
    painter.drawEllipse(QRectF(x, track.top() + 2, knob, knob));
}

} // namespace tallowmere
