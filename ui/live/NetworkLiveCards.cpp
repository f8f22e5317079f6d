#include "ui/live/LiveCards.h"

#include "history/NetworkMonitoringService.h"
#include "monitors/NetworkFormat.h"
#include "ui/live/LiveRateCard.h"
#include "ui/live/UsageHistoryCard.h"
#include "ui/live/WhileShown.h"
#include "ui/pages/InventoryPage.h"
#include "ui/popover/PopoverTexts.h"
#include "ui/window/WindowServices.h"

#include <QPointer>
#include <QVBoxLayout>

namespace tallowmere {

namespace {

QString rate(double bytesPerSecond)
{
    return formatBytes(bytesPerSecond) + QStringLiteral("/s");
}

void showNetwork(LiveRateCard& card, const NetworkMonitor& monitor)
{
    QList<double> download, upload;
    for (const NetworkHistoryPoint& point : monitor.history()) {
        download.append(point.download);
        upload.append(point.upload);
    }
    card.setRates(rate(monitor.downloadRate()), rate(monitor.uploadRate()));
    card.setNotes(networkPeak(download, upload), networkSession(monitor.sessionDownload(), monitor.sessionUpload()));
    card.setHistory(std::move(download), std::move(upload));
}

} // namespace

void addNetworkLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page)
{
    if (!services.network)
        return;
    const QColor accent = categoryAccent(page.record().category, theme);
    auto* card = new LiveRateCard(theme, {QStringLiteral("Live Network Usage"), QStringLiteral("Download"), QStringLiteral("Upload")},
                                  accent);
    page.liveCardsLayout()->addWidget(card);
    QPointer<NetworkMonitoringService> service(services.network);
    const auto refresh = [card, service] {
        // A hidden card catches up when it is shown again.
        if (service && card->isVisible())
            showNetwork(*card, service->monitor());
    };
    QObject::connect(&service->monitor(), &NetworkMonitor::historyChanged, card, refresh);
    whileShown(card, [refresh](bool shown) {
        if (shown)
            refresh();
    });
    demandWhileShown(card, service);

    page.liveCardsLayout()->addWidget(new UsageHistoryCard(theme, accent, services.network->usageStore(), services.settings));
}

} // namespace tallowmere
