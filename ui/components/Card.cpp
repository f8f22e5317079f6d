#include "ui/components/Card.h"

#include "ui/components/Label.h"
#include "ui/components/Icons.h"
#include "ui/components/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace tallowmere {

Card::Card(const Theme& theme, const QString& title, const QString& icon, const QColor& accent, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , title_(makeLabel(title, Theme::font(11.5, QFont::DemiBold), theme.colors.text, this))
    , caption_(makeLabel(QString(), Theme::font(9.5), theme.colors.secondaryText, this))
    , header_(new QHBoxLayout)
    , body_(new QVBoxLayout)
{
    setObjectName(QStringLiteral("card:") + title);
    setAccessibleName(title);
    auto* outer = new QVBoxLayout(this);
    const int pad = theme.spacing.large + 2;
    outer->setContentsMargins(pad, pad, pad, pad);
    outer->setSpacing(theme.spacing.medium);

    QHBoxLayout* header = header_;
    header->setSpacing(theme.spacing.medium);
    if (!icon.isEmpty()) {
        auto* iconLabel = new QLabel(this);
        iconLabel->setPixmap(Icons::tinted(icon, accent, 18, devicePixelRatioF()));
        header->addWidget(iconLabel);
    }
    auto* titles = new QVBoxLayout;
    titles->setSpacing(0);
    titles->addWidget(title_);
    titles->addWidget(caption_);
    caption_->hide();
    header->addLayout(titles, 1);
    outer->addLayout(header);

    body_->setSpacing(theme.spacing.small);
    outer->addLayout(body_);
}

void Card::setCaption(const QString& caption)
{
    caption_->setText(caption);
    caption_->setVisible(!caption.isEmpty());
}

void Card::addHeaderWidget(QWidget* widget)
{
    widget->setParent(this);
    header_->addWidget(widget, 0, Qt::AlignVCenter);
}

QString Card::title() const
{
    return title_->text();
}

void Card::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme_.colors.border, 1));
    painter.setBrush(theme_.colors.card);
    const qreal r = theme_.radii.card + 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), r, r);
}

QWidget* makeEmptyState(const Theme& theme, const QString& icon, const QString& message, QWidget* parent)
{
    auto* box = new QWidget(parent);
    box->setObjectName(QStringLiteral("emptyState"));
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, icon.isEmpty() ? 0 : theme.spacing.large, 0, icon.isEmpty() ? 0 : theme.spacing.large);
    layout->setSpacing(theme.spacing.small);
    if (!icon.isEmpty()) {
        auto* iconLabel = new QLabel(box);
        iconLabel->setPixmap(Icons::tinted(icon, theme.colors.tertiaryText, 32, box->devicePixelRatioF()));
        iconLabel->setAlignment(Qt::AlignCenter);
        layout->addWidget(iconLabel);
    }
    QLabel* text = makeLabel(message, Theme::font(10.5), theme.colors.secondaryText, box);
    text->setAlignment(icon.isEmpty() ? Qt::AlignLeft | Qt::AlignVCenter : Qt::AlignCenter);
    layout->addWidget(text);
    return box;
}

QPushButton* makeActionButton(const Theme& theme, const QString& text, bool prominent, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setCursor(Qt::PointingHandCursor);
    button->setFont(Theme::font(10, QFont::Medium));
    const QColor fill = prominent ? theme.colors.accent : theme.colors.track;
    const QColor ink = prominent ? QColor(Qt::white) : theme.colors.text;
    button->setStyleSheet(QStringLiteral("QPushButton { background: %1; color: %2; border: none; border-radius: %3px;"
                                         " padding: 5px 12px; }"
                                         "QPushButton:hover { background: %4; }"
                                         "QPushButton:pressed { background: %5; }")
                              .arg(fill.name(QColor::HexArgb), ink.name(QColor::HexArgb))
                              .arg(theme.radii.control)
                              .arg(fill.lighter(112).name(QColor::HexArgb), fill.darker(112).name(QColor::HexArgb)));
    return button;
}

} // namespace tallowmere
