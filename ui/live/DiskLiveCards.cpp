#include "ui/live/LiveCards.h"

#include "monitors/DiskMonitoringService.h"
#include "ui/live/DiskRateFormat.h"
#include "ui/live/LiveRateCard.h"
#include "ui/live/WhileShown.h"
#include "ui/pages/InventoryPage.h"
#include "ui/window/WindowServices.h"

#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>

namespace tallowmere {

namespace {

void showDisk(LiveRateCard& card, const DiskMonitor& monitor)
{
    QList<double> read, write;
    double peak = 0;
    for (const DiskIOHistoryPoint& point : monitor.history()) {
        read.append(point.readBytesPerSec);
        write.append(point.writeBytesPerSec);
        peak = std::max({peak, point.readBytesPerSec, point.writeBytesPerSec});
    }
    card.setRates(formatDiskRate(monitor.readBytesPerSec()), formatDiskRate(monitor.writeBytesPerSec()));
    card.setNotes(QStringLiteral("peak ") + formatDiskRate(peak));
    card.setHistory(std::move(read), std::move(write));
}

} // namespace

void addDiskLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page)
{
    if (!services.disk)
        return;
    auto* card = new LiveRateCard(theme, {QStringLiteral("Live Disk Activity"), QStringLiteral("Read"), QStringLiteral("Write")},
                                  categoryAccent(page.record().category, theme));
    page.liveCardsLayout()->addWidget(card);
    QPointer<DiskMonitoringService> service(services.disk);
    const auto refresh = [card, service] {
        // A hidden card catches up when it is shown again.
        if (service && card->isVisible())
            showDisk(*card, service->monitor());
    };
    QObject::connect(&service->monitor(), &DiskMonitor::historyChanged, card, refresh);
    whileShown(card, [refresh](bool shown) {
        if (shown)
            refresh();
    });
    demandWhileShown(card, service);
}

} // namespace tallowmere
