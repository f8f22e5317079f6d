#include "ui/components/InfoRow.h"

#include "ui/components/Card.h"
#include "ui/components/Icons.h"
#include "ui/components/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace tallowmere {

InfoRow::InfoRow(const Theme& theme, const QString& label, const QString& value, bool mono, bool revealable,
                 QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , value_(value)
    , revealed_(!revealable)
    , label_(new QLabel(label, this))
    , value_label_(new QLabel(this))
{
    setObjectName(QStringLiteral("row:") + label);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 2, 0, 2);
    layout->setSpacing(theme.spacing.medium);

    label_->setFont(Theme::font(10.5));
    QPalette secondary = label_->palette();
    secondary.setColor(QPalette::WindowText, theme.colors.secondaryText);
    label_->setPalette(secondary);

    value_label_->setFont(mono ? Theme::monoFont(10) : Theme::font(10.5, QFont::Medium));
    QPalette primary = value_label_->palette();
    primary.setColor(QPalette::WindowText, theme.colors.text);
    value_label_->setPalette(primary);
    value_label_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    value_label_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    value_label_->setWordWrap(false);

    layout->addWidget(label_);
    layout->addStretch(1);
    layout->addWidget(value_label_);
    if (revealable) {
        button_ = makeActionButton(theme, QString(), false, this);
        button_->setObjectName(QStringLiteral("reveal:") + label);
        connect(button_, &QPushButton::clicked, this, &InfoRow::toggleReveal);
        layout->addWidget(button_);
    }
    refresh();
}

QString InfoRow::label() const
{
    return label_->text();
}

void InfoRow::setValue(const QString& value)
{
    if (value == value_)
        return;
    value_ = value;
    refresh();
}

QString InfoRow::shownValue() const
{
    return value_label_->text();
}

QString InfoRow::masked(const QString& value)
{
    return QString(std::max<qsizetype>(8, value.size()), QChar(0x2022));
}

void InfoRow::toggleReveal()
{
    if (!button_)
        return;
    revealed_ = !revealed_;
    refresh();
}

void InfoRow::refresh()
{
    value_label_->setText(revealed_ ? value_ : masked(value_));
    value_label_->setAccessibleName(revealed_ ? value_ : QStringLiteral("hidden"));
    if (!button_)
        return;
    button_->setText(revealed_ ? QStringLiteral("Hide") : QStringLiteral("Reveal"));
    button_->setAccessibleName(button_->text() + u' ' + label_->text());
    button_->setIcon(Icons::tintedIcon(revealed_ ? QStringLiteral("eye.slash") : QStringLiteral("eye"), theme_.colors.text, 14));
}

} // namespace tallowmere
