#include "ui/live/LiveCards.h"

#include "monitors/MemoryMonitoringService.h"
#include "ui/components/AreaGraph.h"
#include "ui/components/Card.h"
#include "ui/components/Theme.h"
#include "ui/live/CpuMemoryFigures.h"
#include "ui/live/ProcessList.h"
#include "ui/live/ProcessTableView.h"
#include "ui/live/UsageCardParts.h"
#include "ui/live/WhileShown.h"
#include "ui/pages/InventoryPage.h"
#include "ui/window/WindowServices.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace tallowmere {

namespace {

constexpr int kVisibleRows = 10;

Card* makeUsageCard(const Theme& theme, QColor accent, MemoryMonitor& monitor, QWidget* parent)
{
    auto* card = new Card(theme, QStringLiteral("Live Memory Usage"), QStringLiteral("chart.line.uptrend.xyaxis"), accent, parent);
    const QString widest = QStringLiteral("999.9 GB");
    auto* totals = new QHBoxLayout;
    totals->setSpacing(theme.spacing.section * 2);
    QLabel* used = addStackedFigure(theme, QStringLiteral("Used"), widest, *totals, card);
    QLabel* free = addStackedFigure(theme, QStringLiteral("Free"), widest, *totals, card);
    totals->addStretch(1);
    card->body()->addLayout(totals);

    // What "used" is made of, in the memory monitor's Linux meanings.
    auto* breakdown = new QHBoxLayout;
    breakdown->setSpacing(theme.spacing.small);
    QLabel* active = addLegendEntry(theme, accent, QStringLiteral("Active"), widest, *breakdown, card);
    QLabel* wired = addLegendEntry(theme, theme.colors.warning, QStringLiteral("Wired"), widest, *breakdown, card);
    QLabel* compressed = addLegendEntry(theme, theme.colors.network, QStringLiteral("Compressed"), widest, *breakdown, card);
    breakdown->addStretch(1);
    card->body()->addLayout(breakdown);
    AreaGraph* graph = addPercentHistoryGraph(theme, accent, *card);

    const auto show = [&monitor, used, free, active, wired, compressed, graph] {
        used->setText(gigabytes(monitor.usedGB()));
        free->setText(gigabytes(monitor.freeGB()));
        active->setText(gigabytes(monitor.activeGB()));
        wired->setText(gigabytes(monitor.wiredGB()));
        compressed->setText(gigabytes(monitor.compressedGB()));
        graph->setValues(historyValues(monitor.history()));
    };
    show();
    QObject::connect(&monitor, &MemoryMonitor::historyChanged, card, show);
    return card;
}

Card* makeProcessCard(const Theme& theme, QColor accent, MemoryMonitor& monitor, QWidget* parent)
{
    auto* card = new Card(theme, QStringLiteral("Memory by Process"), QStringLiteral("memorychip"), accent, parent);
    auto* list = new ProcessList(theme, accent, memoryProcessLayout(),
                                 {{sortLabel(MemorySortField::memory), 1}, {sortLabel(MemorySortField::name), 0}},
                                 kVisibleRows, card);
    list->view().setFigureWidths(100, 80);
    list->view().setAccessibleName(card->title());
    card->addHeaderWidget(list->sortButton());
    card->body()->addWidget(list);
    const auto show = [&monitor, list](bool resultSeen) {
        list->setEmptyText(memoryListEmptyText(resultSeen));
        list->setRows(memoryProcessRows(monitor.perProcess()));
    };
    show(!monitor.perProcess().isEmpty());
    QObject::connect(&monitor, &MemoryMonitor::perProcessChanged, list, [show] { show(true); });
    return card;
}

} // namespace

void addMemoryLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page)
{
    if (!services.memory)
        return;
    const QColor accent = categoryAccent(SpecCategory::ram, theme);
    MemoryMonitor& monitor = services.memory->monitor();
    QWidget* area = page.liveCardsLayout()->parentWidget();
    Card* usage = makeUsageCard(theme, accent, monitor, area);
    page.liveCardsLayout()->addWidget(usage);
    page.liveCardsLayout()->addWidget(makeProcessCard(theme, accent, monitor, area));
    demandWhileShown(usage, services.memory);
}

} // namespace tallowmere
