#include "ui/popover/PopoverCard.h"

#include "ui/components/Label.h"
#include "ui/components/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace tallowmere {

namespace {
constexpr int kIconSize = 14;
}


PopoverCard::PopoverCard(const Theme& theme, const QString& title, const QString& icon, QColor accent, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , accent_(accent)
    , icon_(new QLabel(this))
    , note_(makeLabel({}, Theme::font(9), theme.colors.tertiaryText, this))
    , headline_(makeLabel({}, Theme::font(15, QFont::DemiBold), theme.colors.text, this))
    , detail_(makeLabel({}, Theme::font(9.5), theme.colors.secondaryText, this))
    , body_(new QVBoxLayout)
{
    setAccessibleName(title);
    setIcon(icon);
    headline_->setObjectName(title + QStringLiteral(".headline"));
    detail_->setObjectName(title + QStringLiteral(".detail"));
    note_->hide();

    auto* head = new QHBoxLayout;
    head->setSpacing(theme.spacing.small);
    head->addWidget(icon_);
    head->addWidget(makeLabel(title, Theme::font(10.5, QFont::DemiBold), theme.colors.text, this));
    head->addWidget(note_);
    head->addStretch();
    head->addWidget(headline_);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(theme.spacing.medium + 2, theme.spacing.medium, theme.spacing.medium + 2,
                               theme.spacing.medium);
    column->setSpacing(theme.spacing.tight);
    column->addLayout(head);
    column->addWidget(detail_);
    body_->setContentsMargins(0, theme.spacing.tight, 0, 0);
    body_->setSpacing(theme.spacing.tight);
    column->addLayout(body_);
}

void PopoverCard::setIcon(const QString& icon)
{
    icon_->setPixmap(Icons::tinted(icon, accent_, kIconSize, devicePixelRatioF()));
}

void PopoverCard::setTitleNote(const QString& note)
{
    note_->setText(note);
    note_->setVisible(!note.isEmpty());
}

void PopoverCard::setHeadline(const QString& headline)
{
    headline_->setText(headline);
}

void PopoverCard::setDetail(const QString& detail)
{
    detail_->setText(detail);
    detail_->setVisible(!detail.isEmpty());
}

QString PopoverCard::headline() const
{
    return headline_->text();
}

QString PopoverCard::detail() const
{
    return detail_->text();
}

void PopoverCard::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme_.colors.border, 1));
    painter.setBrush(theme_.colors.card);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), theme_.radii.card, theme_.radii.card);
}

} // namespace tallowmere
