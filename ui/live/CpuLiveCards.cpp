#include "ui/live/LiveCards.h"

#include "monitors/CPUMonitoringService.h"
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
#include <QPointer>
#include <QVBoxLayout>

namespace tallowmere {

namespace {

// Rows the list shows before it scrolls.
constexpr int kVisibleRows = 12;

Card* makeUsageCard(const Theme& theme, QColor accent, CPUMonitor& monitor, QWidget* parent)
{
    auto* card = new Card(theme, QStringLiteral("Live CPU Usage"), QStringLiteral("chart.line.uptrend.xyaxis"), accent, parent);
    auto* row = new QHBoxLayout;
    row->setSpacing(theme.spacing.small);
    QLabel* total = makeHeadlineFigure(theme, card);
    row->addWidget(total, 0, Qt::AlignVCenter);
    row->addStretch(1);
    QLabel* user = addLegendEntry(theme, accent, QStringLiteral("User"), QStringLiteral("100%"), *row, card);
    QLabel* system = addLegendEntry(theme, theme.colors.warning, QStringLiteral("System"), QStringLiteral("100%"), *row, card);
    card->body()->addLayout(row);
    AreaGraph* graph = addPercentHistoryGraph(theme, accent, *card);

    const auto show = [&monitor, total, user, system, graph] {
        total->setText(headlinePercent(monitor.currentUsage()));
        user->setText(headlinePercent(monitor.userUsage()));
        system->setText(headlinePercent(monitor.systemUsage()));
        graph->setValues(historyValues(monitor.history()));
    };
    show();
    // Every figure of a sample is assigned before the history grows, so one redraw a sample.
    QObject::connect(&monitor, &CPUMonitor::historyChanged, card, show);
    return card;
}

Card* makeProcessCard(const Theme& theme, QColor accent, CPUMonitor& monitor, QWidget* parent)
{
    auto* card = new Card(theme, QStringLiteral("Processes"), QStringLiteral("list.bullet.rectangle"), accent, parent);
    auto* list = new ProcessList(theme, accent, cpuProcessLayout(),
                                 {{sortLabel(ProcessSortField::cpu), 1},
                                  {sortLabel(ProcessSortField::memory), 2},
                                  {sortLabel(ProcessSortField::name), 0}},
                                 kVisibleRows, card);
    list->view().setFigureWidths(80, 100);
    list->setEmptyText(QStringLiteral("Collecting process data\u2026"));
    list->view().setAccessibleName(card->title());
    card->addHeaderWidget(list->sortButton());
    card->body()->addWidget(list);
    const auto show = [&monitor, list] { list->setRows(cpuProcessRows(monitor.processes())); };
    show();
    QObject::connect(&monitor, &CPUMonitor::processesChanged, list, show);

    // Processes are walked only while the list is on screen; leaving empties it, so a return
    // starts from a fresh baseline.
    whileShown(card, [guard = QPointer<CPUMonitor>(&monitor)](bool shown) {
        if (!guard)
            return;
        if (shown)
            guard->startProcessMonitoring();
        else
            guard->stopProcessMonitoring();
    });
    return card;
}

} // namespace

void addCpuLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page)
{
    if (!services.cpu)
        return;
    const QColor accent = categoryAccent(SpecCategory::cpu, theme);
    CPUMonitor& monitor = services.cpu->monitor();
    QWidget* area = page.liveCardsLayout()->parentWidget();
    Card* usage = makeUsageCard(theme, accent, monitor, area);
    page.liveCardsLayout()->addWidget(usage);
    page.liveCardsLayout()->addWidget(makeProcessCard(theme, accent, monitor, area));
    demandWhileShown(usage, services.cpu);
}

} // namespace tallowmere
