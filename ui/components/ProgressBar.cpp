#include "ui/components/ProgressBar.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tallowmere {

ProgressBar::ProgressBar(const Theme& theme, QColor accent, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , accent_(accent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(sizeHint().height());
}

void ProgressBar::setFraction(double fraction)
{
    fraction = std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0.0;
    if (fraction == fraction_)
        return;
    fraction_ = fraction;
    update();
}

void ProgressBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF track = rect();
    const qreal radius = std::min(theme_.radii.bar, track.height() / 2);
    painter.setBrush(theme_.colors.track);
    painter.drawRoundedRect(track, radius, radius);
    if (fraction_ <= 0)
        return;
    // A sliver is widened to a dot so small values stay visible.
    const qreal width = std::max(track.width() * fraction_, track.height());
    painter.setBrush(accent_);
    painter.drawRoundedRect(QRectF(track.topLeft(), QSizeF(width, track.height())), radius, radius);
}

} // namespace tallowmere
