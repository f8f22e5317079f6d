#include "ui/live/UsageCardParts.h"

#include "ui/components/AreaGraph.h"
#include "ui/components/Card.h"
#include "ui/components/Label.h"
#include "ui/components/Theme.h"

#include <QBoxLayout>
#include <QLabel>
#include <QFontMetrics>
#include <QPainter>
#include <QPixmap>

namespace tallowmere {

namespace {

QPixmap dot(QColor color, qreal devicePixelRatio)
{
    constexpr int size = 8;
    QPixmap pixmap(QSize(size, size) * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(QRectF(0, 0, size, size));
    return pixmap;
}

// A figure that changes every second keeps one size, so a new value repaints the label alone
// instead of laying out the whole page again.
void keepSizeFor(QLabel* label, const QString& widest)
{
    const QFontMetrics metrics(label->font());
    label->setFixedSize(metrics.horizontalAdvance(widest) + 2, metrics.height());
}

} // namespace

AreaGraph* addPercentHistoryGraph(const Theme& theme, QColor accent, Card& card)
{
    auto* graph = new AreaGraph(theme, accent, &card);
    graph->setObjectName(QStringLiteral("historyGraph"));
    graph->setMaxValue(100);
    graph->setAxisTicks({0, 50, 100});
    graph->setFixedHeight(120);
    card.body()->addSpacing(theme.spacing.small);
    card.body()->addWidget(graph);
    QLabel* caption = makeLabel(QStringLiteral("Last 60s"), Theme::font(9), theme.colors.tertiaryText, &card);
    caption->setObjectName(QStringLiteral("graphCaption"));
    card.body()->addWidget(caption);
    return graph;
}

QLabel* makeHeadlineFigure(const Theme& theme, QWidget* parent)
{
    QLabel* figure = makeLabel({}, Theme::font(26, QFont::Bold), theme.colors.text, parent);
    figure->setObjectName(QStringLiteral("headline"));
    keepSizeFor(figure, QStringLiteral("100%"));
    return figure;
}

QLabel* addLegendEntry(const Theme& theme, QColor color, const QString& title, const QString& widest, QBoxLayout& row,
                       QWidget* parent)
{
    auto* marker = new QLabel(parent);
    marker->setPixmap(dot(color, parent->devicePixelRatioF()));
    row.addWidget(marker, 0, Qt::AlignVCenter);
    row.addWidget(makeLabel(title, Theme::font(10), theme.colors.secondaryText, parent), 0, Qt::AlignVCenter);
    QLabel* figure = makeLabel({}, Theme::font(10, QFont::DemiBold), theme.colors.text, parent);
    figure->setObjectName(QStringLiteral("legend:") + title);
    keepSizeFor(figure, widest);
    row.addWidget(figure, 0, Qt::AlignVCenter);
    row.addSpacing(theme.spacing.medium);
    return figure;
}

QLabel* addStackedFigure(const Theme& theme, const QString& title, const QString& widest, QBoxLayout& row, QWidget* parent)
{
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    column->addWidget(makeLabel(title, Theme::font(9.5), theme.colors.secondaryText, parent));
    QLabel* figure = makeLabel({}, Theme::font(17, QFont::DemiBold), theme.colors.text, parent);
    figure->setObjectName(QStringLiteral("figure:") + title);
    keepSizeFor(figure, widest);
    column->addWidget(figure);
    row.addLayout(column);
    return figure;
}

} // namespace tallowmere
