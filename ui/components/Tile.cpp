#include "ui/components/Tile.h"

#include "ui/components/Icons.h"
#include "ui/components/Theme.h"

#include <QFontMetrics>
#include <QPainter>

namespace tallowmere {

Tile::Tile(const Theme& theme, const QString& icon, const QColor& accent, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , icon_(icon)
    , accent_(accent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Tile::setTexts(const QString& title, const QString& value, const std::optional<QString>& subtitle)
{
    title_ = title;
    value_ = value;
    subtitle_ = subtitle.value_or(QString());
    setObjectName(QStringLiteral("tile:") + title);
    setAccessibleName(title + QStringLiteral(": ") + value);
    setToolTip(value_);
    update();
}

void Tile::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Colors& c = theme_.colors;
    const qreal r = theme_.radii.card + 2;
    painter.setPen(QPen(c.border, 1));
    painter.setBrush(c.card);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), r, r);

    const int pad = theme_.spacing.large + 2;
    const QRectF patch(pad, pad, 30, 30);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::withOpacity(accent_, theme_.dark ? 0.22 : 0.14));
    painter.drawRoundedRect(patch, 8, 8);
    painter.drawPixmap(QPointF(patch.x() + 6, patch.y() + 6), Icons::tinted(icon_, accent_, 18, devicePixelRatioF()));

    const int textLeft = pad + 30 + theme_.spacing.medium;
    const int textWidth = width() - textLeft - pad;
    painter.setFont(Theme::font(10, QFont::Medium));
    painter.setPen(c.secondaryText);
    painter.drawText(QRect(textLeft, pad, textWidth, 30), Qt::AlignVCenter | Qt::AlignLeft, title_);

    const QFont valueFont = Theme::font(15, QFont::DemiBold);
    painter.setFont(valueFont);
    painter.setPen(c.text);
    const int valueTop = pad + 36;
    const QFontMetrics valueMetrics(valueFont);
    painter.drawText(QRect(pad, valueTop, width() - 2 * pad, valueMetrics.height()), Qt::AlignLeft,
                     valueMetrics.elidedText(value_, Qt::ElideRight, width() - 2 * pad));
    if (!subtitle_.isEmpty()) {
        const QFont small = Theme::font(9.5);
        painter.setFont(small);
        painter.setPen(c.secondaryText);
        const QFontMetrics metrics(small);
        painter.drawText(QRect(pad, valueTop + valueMetrics.height() + 2, width() - 2 * pad, metrics.height()), Qt::AlignLeft,
                         metrics.elidedText(subtitle_, Qt::ElideRight, width() - 2 * pad));
    }
}

} // namespace tallowmere
