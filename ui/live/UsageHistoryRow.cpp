#include "ui/live/UsageHistoryRow.h"

#include "ui/components/Icons.h"
#include "ui/components/Theme.h"

#include <QPainter>

namespace tallowmere {

namespace {
constexpr int kIndent = 22;
constexpr int kIconSize = 12;
} // namespace

UsageHistoryRow::UsageHistoryRow(const Theme& theme, Kind kind, const QString& name, const QString& download,
                                 const QString& upload, bool expanded, QWidget* parent)
    : QAbstractButton(parent)
    , theme_(theme)
    , kind_(kind)
    , text_(name)
    , download_(download)
    , upload_(upload)
    , expanded_(expanded)
{
    setObjectName((kind == Kind::app ? QStringLiteral("app:") : QStringLiteral("endpoint:")) + name);
    setAccessibleName(name);
    setToolTip(name);
    setFixedHeight(sizeHint().height());
    if (kind == Kind::endpoint)
        setFocusPolicy(Qt::NoFocus);
    else
        setCursor(Qt::PointingHandCursor);
}

QSize UsageHistoryRow::sizeHint() const
{
    return {360, kind_ == Kind::app ? 28 : 24};
}

void UsageHistoryRow::enterEvent(QEnterEvent* event)
{
    hovered_ = kind_ == Kind::app;
    update();
    QAbstractButton::enterEvent(event);
}

void UsageHistoryRow::leaveEvent(QEvent* event)
{
    hovered_ = false;
    update();
    QAbstractButton::leaveEvent(event);
}

void UsageHistoryRow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = rect();
    if (hovered_) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme_.colors.cardHover);
        painter.drawRoundedRect(area, theme_.radii.control, theme_.radii.control);
    }
    const bool app = kind_ == Kind::app;
    const qreal left = app ? 4 : kIndent;
    const QString icon = app ? (expanded_ ? QStringLiteral("chevron.down") : QStringLiteral("chevron.right"))
                             : QStringLiteral("arrow.turn.down.right");
    const QPixmap pixmap = Icons::tinted(icon, theme_.colors.tertiaryText, kIconSize, devicePixelRatioF());
    painter.drawPixmap(QPointF(left, (area.height() - kIconSize) / 2), pixmap);

    const qreal columns = 2 * kColumnWidth;
    const QRectF nameRect(left + kIconSize + 8, 0, area.width() - columns - left - kIconSize - 16, area.height());
    painter.setFont(Theme::font(app ? 10.5 : 10, app ? QFont::Medium : QFont::Normal));
    painter.setPen(app ? theme_.colors.text : theme_.colors.secondaryText);
    painter.drawText(nameRect, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(text_, Qt::ElideMiddle, int(nameRect.width())));
    painter.setFont(Theme::monoFont(app ? 10 : 9.5));
    const QRectF downRect(area.width() - columns, 0, kColumnWidth, area.height());
    const QRectF upRect(area.width() - kColumnWidth, 0, kColumnWidth - 4, area.height());
    painter.drawText(downRect, Qt::AlignRight | Qt::AlignVCenter, download_);
    painter.drawText(upRect, Qt::AlignRight | Qt::AlignVCenter, upload_);
}

} // namespace tallowmere
