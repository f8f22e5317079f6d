#include "ui/components/HoverButton.h"

#include <QFontMetrics>
#include <QPainter>

namespace tallowmere {

HoverButton::HoverButton(const Theme& theme, const QString& text, QWidget* parent)
    : QAbstractButton(parent)
    , theme_(theme)
{
    setText(text);
    setAccessibleName(text);
    setFont(Theme::font(11, QFont::Medium));
    setCursor(Qt::PointingHandCursor);
    setIconSize(QSize(14, 14));
    setAttribute(Qt::WA_Hover);
}

void HoverButton::setHint(const QString& hint)
{
    hint_ = hint;
    updateGeometry();
    update();
}

void HoverButton::setCentered(bool centered)
{
    centered_ = centered;
    update();
}

QSize HoverButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    int width = metrics.horizontalAdvance(text()) + 2 * theme_.spacing.medium;
    if (!icon().isNull())
        width += iconSize().width() + theme_.spacing.small;
    if (!hint_.isEmpty())
        width += metrics.horizontalAdvance(hint_) + theme_.spacing.large;
    return {width, std::max(metrics.height(), iconSize().height()) + 2 * theme_.spacing.small + 2};
}

void HoverButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Colors& c = theme_.colors;
    QColor surface = isChecked() ? Theme::withOpacity(c.accent, 0.85) : (hovered_ || isDown()) ? c.cardHover : c.card;
    if (!isEnabled())
        surface = Theme::withOpacity(surface, 0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(surface);
    painter.drawRoundedRect(QRectF(rect()), theme_.radii.control, theme_.radii.control);

    const QColor ink = isChecked() ? QColor(Qt::white) : isEnabled() ? c.text : c.tertiaryText;
    QRect area = rect().adjusted(theme_.spacing.medium, 0, -theme_.spacing.medium, 0);
    painter.setFont(font());
    if (!hint_.isEmpty()) {
        painter.setPen(c.tertiaryText);
        painter.drawText(area, Qt::AlignRight | Qt::AlignVCenter, hint_);
    }
    const QFontMetrics metrics(font());
    int contentWidth = metrics.horizontalAdvance(text());
    if (!icon().isNull())
        contentWidth += iconSize().width() + theme_.spacing.small;
    int x = centered_ && hint_.isEmpty() ? area.left() + (area.width() - contentWidth) / 2 : area.left();
    if (!icon().isNull()) {
        const QRect iconRect(QPoint(x, (height() - iconSize().height()) / 2), iconSize());
        icon().paint(&painter, iconRect);
        x += iconSize().width() + theme_.spacing.small;
    }
    painter.setPen(ink);
    painter.drawText(QRect(x, 0, area.right() - x, height()), Qt::AlignLeft | Qt::AlignVCenter, text());
}

void HoverButton::enterEvent(QEnterEvent* event)
{
    hovered_ = true;
    update();
    QAbstractButton::enterEvent(event);
}

void HoverButton::leaveEvent(QEvent* event)
{
    hovered_ = false;
    update();
    QAbstractButton::leaveEvent(event);
}

} // namespace tallowmere
