#include "ui/components/SectionLabel.h"

#include <QFontMetrics>
#include <QPainter>

namespace tallowmere {

namespace {
constexpr int kIconSize = 12;
}

SectionLabel::SectionLabel(const Theme& theme, const QString& title, const QIcon& icon, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , title_(title)
    , icon_(icon)
{
    setFont(Theme::font(10, QFont::DemiBold));
    setAccessibleName(title);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize SectionLabel::sizeHint() const
{
    const QFontMetrics metrics(font());
    const int iconWidth = icon_.isNull() ? 0 : kIconSize + theme_.spacing.small;
    return {iconWidth + metrics.horizontalAdvance(title_), std::max(metrics.height(), kIconSize) + 2};
}

void SectionLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    int x = 0;
    if (!icon_.isNull()) {
        icon_.paint(&painter, QRect(0, (height() - kIconSize) / 2, kIconSize, kIconSize));
        x = kIconSize + theme_.spacing.small;
    }
    painter.setFont(font());
    painter.setPen(theme_.colors.secondaryText);
    painter.drawText(QRect(x, 0, width() - x, height()), Qt::AlignLeft | Qt::AlignVCenter, title_);
}

Separator::Separator(const Theme& theme, Qt::Orientation orientation, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
{
    if (orientation == Qt::Horizontal) {
        setFixedHeight(1);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    } else {
        setFixedWidth(1);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    }
}

void Separator::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), theme_.colors.separator);
}

} // namespace tallowmere
