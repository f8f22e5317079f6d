#include "ui/popover/SystemSection.h"

#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "monitors/NetworkFormat.h"
#include "power/BatteryMonitoringService.h"
#include "ui/components/AreaGraph.h"
#include "ui/components/ProgressBar.h"
#include "ui/popover/PopoverCard.h"
#include "ui/popover/PopoverTexts.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tallowmere {

namespace {
constexpr int kGraphHeight = 36;

template <class Point, class Field>
QList<double> series(const QList<Point>& history, Field field)
{
    QList<double> values;
    values.reserve(history.size());
    for (const Point& p : history)
        values.append(p.*field);
    return values;
}

AreaGraph* addGraph(PopoverCard* card, const Theme& theme, QColor accent, double maxValue)
{
    auto* graph = new AreaGraph(theme, accent, card);
    graph->setMaxValue(maxValue);
    graph->setFixedHeight(kGraphHeight);
    card->body()->addWidget(graph);
    return graph;
}
} // namespace

SystemSection::SystemSection(const Theme& theme, CPUMonitoringService& cpu, MemoryMonitoringService& memory,
                             DiskMonitoringService& disk, NetworkMonitoringService& network,
                             BatteryMonitoringService& battery, QWidget* parent)
    : QWidget(parent)
    , cpu_(cpu)
    , memory_(memory)
    , disk_(disk)
    , network_(network)
    , battery_(battery)
    , cpuCard_(new PopoverCard(theme, QStringLiteral("CPU"), QStringLiteral("cpu"), theme.colors.cpu, this))
    , cpuGraph_(addGraph(cpuCard_, theme, theme.colors.cpu, 100))
    , memoryCard_(new PopoverCard(theme, QStringLiteral("Memory"), QStringLiteral("memorychip"), theme.colors.memory, this))
    , memoryGraph_(addGraph(memoryCard_, theme, theme.colors.memory, 100))
    , diskCard_(new PopoverCard(theme, QStringLiteral("Disk"), QStringLiteral("internaldrive"), theme.colors.disk, this))
    , diskBar_(new ProgressBar(theme, theme.colors.disk, diskCard_))
    , networkCard_(new PopoverCard(theme, QStringLiteral("Network"), QStringLiteral("network"), theme.colors.network, this))
    , networkGraph_(addGraph(networkCard_, theme, theme.colors.network, 1))
    , networkPeak_(makeLabel({}, Theme::font(9), theme.colors.secondaryText, networkCard_))
    , networkSession_(makeLabel({}, Theme::font(9), theme.colors.secondaryText, networkCard_))
    , batteryCard_(new PopoverCard(theme, QStringLiteral("Battery"), QStringLiteral("battery.100percent"),
                                   theme.colors.battery, this))
{
    diskCard_->body()->addWidget(diskBar_);
    networkCard_->setTitleNote(QStringLiteral("Wi-Fi"));
    networkPeak_->setObjectName(QStringLiteral("Network.peak"));
    networkSession_->setObjectName(QStringLiteral("Network.session"));
    auto* lines = new QHBoxLayout;
    lines->addWidget(networkPeak_);
    lines->addStretch();
    lines->addWidget(networkSession_);
    networkCard_->body()->addLayout(lines);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(theme.spacing.small + 2);
    for (QWidget* card : {cpuCard_, memoryCard_, diskCard_, networkCard_, batteryCard_})
        column->addWidget(card);

    // Each monitor announces a sample with its history; the battery with its record.
    connect(&cpu_.monitor(), &CPUMonitor::historyChanged, this, [this] { whenShown(&SystemSection::refreshCpu); });
    connect(&memory_.monitor(), &MemoryMonitor::historyChanged, this,
            [this] { whenShown(&SystemSection::refreshMemory); });
    connect(&disk_.monitor(), &DiskMonitor::usagePercentChanged, this,
            [this] { whenShown(&SystemSection::refreshDisk); });
    connect(&network_.monitor(), &NetworkMonitor::historyChanged, this,
            [this] { whenShown(&SystemSection::refreshNetwork); });
    connect(&battery_, &BatteryMonitoringService::batteryChanged, this,
            [this] { whenShown(&SystemSection::refreshBattery); });
    refresh();
}

void SystemSection::whenShown(void (SystemSection::*refresher)())
{
    // Nobody sees a hidden popover; showEvent catches up.
    if (isVisible())
        (this->*refresher)();
}

void SystemSection::showEvent(QShowEvent* event)
{
    refresh();
    QWidget::showEvent(event);
}

void SystemSection::refresh()
{
    refreshCpu();
    refreshMemory();
    refreshDisk();
    refreshNetwork();
    refreshBattery();
}

void SystemSection::refreshCpu()
{
    const CPUMonitor& m = cpu_.monitor();
    cpuCard_->setHeadline(percentHeadline(m.currentUsage()));
    cpuCard_->setDetail(cpuDetail(m.userUsage(), m.systemUsage()));
    cpuGraph_->setValues(series(m.history(), &CPUHistoryPoint::usage));
}

void SystemSection::refreshMemory()
{
    const MemoryMonitor& m = memory_.monitor();
    memoryCard_->setHeadline(percentHeadline(m.usagePercent()));
    memoryCard_->setDetail(usedFreeDetail(m.usedGB(), m.freeGB()));
    memoryGraph_->setValues(series(m.history(), &MemoryHistoryPoint::usage));
}

void SystemSection::refreshDisk()
{
    const DiskMonitor& m = disk_.monitor();
    diskCard_->setHeadline(percentHeadline(m.usagePercent()));
    diskCard_->setDetail(usedFreeDetail(m.usedGB(), m.freeGB()));
    diskBar_->setFraction(m.usagePercent() / 100.0);
}

void SystemSection::refreshNetwork()
{
    const NetworkMonitor& m = network_.monitor();
    networkCard_->setHeadline(QStringLiteral("\u2193 ") + formatBytesCompact(m.downloadRate()) + QStringLiteral("  \u2191 ")
                              + formatBytesCompact(m.uploadRate()));
    const QList<double> download = series(m.history(), &NetworkHistoryPoint::download);
    const QList<double> upload = series(m.history(), &NetworkHistoryPoint::upload);
    // The graph scales to its own busiest sample so quiet traffic still shows a shape.
    double top = 1;
    for (double v : download)
        top = std::max(top, v);
    networkGraph_->setMaxValue(top);
    networkGraph_->setValues(download);
    networkPeak_->setText(networkPeak(download, upload));
    networkSession_->setText(networkSession(m.sessionDownload(), m.sessionUpload()));
    networkCard_->setDetail({});
}

void SystemSection::refreshBattery()
{
    const BatteryInfo& b = battery_.battery();
    batteryCard_->setVisible(b.isPresent);
    if (!b.isPresent)
        return;
    batteryCard_->setIcon(batteryIconName(b));
    QString headline = QString::asprintf("%lld", static_cast<long long>(b.percentage.value_or(0))) + QLatin1Char('%');
    if (b.isCharging.value_or(false))
        headline = QStringLiteral("\u26A1 ") + headline;
    batteryCard_->setHeadline(headline);
    batteryCard_->setDetail(batteryStatusLine(b));
}

} // namespace tallowmere
