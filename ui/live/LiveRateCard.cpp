#include "ui/live/LiveRateCard.h"

#include "ui/components/Icons.h"
#include "ui/components/Label.h"
#include "ui/components/RateHistoryGraph.h"
#include "ui/components/Theme.h"

#include <QHBoxLayout>
#include <QLabel>

namespace tallowmere {

namespace {

// One figure: the arrow and caption in the series colour above the value.
QLabel* addFigure(const Theme& theme, QHBoxLayout* row, const QString& icon, const QString& caption,
                  const QColor& color, QWidget* parent)
{
    auto* column = new QVBoxLayout;
    column->setSpacing(2);
    auto* head = new QHBoxLayout;
    head->setSpacing(theme.spacing.tight);
    auto* arrow = new QLabel(parent);
    arrow->setPixmap(Icons::tinted(icon, color, 14, parent->devicePixelRatioF()));
    head->addWidget(arrow);
    head->addWidget(makeLabel(caption, Theme::font(10), theme.colors.secondaryText, parent));
    head->addStretch();
    column->addLayout(head);
    QLabel* value = makeLabel(QStringLiteral("\u2014"), Theme::font(17, QFont::DemiBold), theme.colors.text, parent);
    value->setObjectName(caption + QStringLiteral(".value"));
    value->setMinimumWidth(118);
    column->addWidget(value);
    row->addLayout(column);
    return value;
}

} // namespace

LiveRateCard::LiveRateCard(const Theme& theme, const Captions& captions, const QColor& accent, QWidget* parent)
    : Card(theme, captions.title, QStringLiteral("chart.line.uptrend.xyaxis"), accent, parent)
    , upperNote_(makeLabel({}, Theme::font(10), theme.colors.secondaryText, this))
    , lowerNote_(makeLabel({}, Theme::font(10), theme.colors.secondaryText, this))
    , graph_(new RateHistoryGraph(theme, accent, theme.colors.upload, this))
{
    auto* row = new QHBoxLayout;
    row->setSpacing(theme.spacing.section + 6);
    firstValue_ = addFigure(theme, row, QStringLiteral("arrow.down"), captions.first, accent, this);
    secondValue_ = addFigure(theme, row, QStringLiteral("arrow.up"), captions.second, theme.colors.upload, this);
    row->addStretch();
    auto* notes = new QVBoxLayout;
    notes->setSpacing(2);
    upperNote_->setObjectName(QStringLiteral("note.upper"));
    lowerNote_->setObjectName(QStringLiteral("note.lower"));
    for (QLabel* note : {upperNote_, lowerNote_}) {
        note->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        notes->addWidget(note);
    }
    row->addLayout(notes);
    body()->addLayout(row);
    graph_->setMinimumHeight(110);
    body()->addWidget(graph_);
}

void LiveRateCard::setRates(const QString& first, const QString& second)
{
    firstValue_->setText(first);
    secondValue_->setText(second);
}

void LiveRateCard::setNotes(const QString& upper, const QString& lower)
{
    upperNote_->setText(upper);
    upperNote_->setVisible(!upper.isEmpty());
    lowerNote_->setText(lower);
    lowerNote_->setVisible(!lower.isEmpty());
}

void LiveRateCard::setHistory(QList<double> first, QList<double> second)
{
    graph_->setSeries(std::move(first), std::move(second));
}

QString LiveRateCard::firstRate() const
{
    return firstValue_->text();
}

QString LiveRateCard::secondRate() const
{
    return secondValue_->text();
}

} // namespace tallowmere
