#include "app/SnapshotCapture.h"

#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <optional>
#include <vector>

namespace tallowmere {

namespace {

// One service switched on for the capture, with a way to tell that its monitor has
// published a sample since.
struct Watched {
    QPointer<MonitoringService> service;
    bool wasServerActive;
    std::function<std::optional<qint64>()> lastPointId;
    std::optional<qint64> idAtStart;

    bool hasFreshSample() const
    {
        const auto id = lastPointId();
        return id && id != idAtStart;
    }
};

template <class Service>
void watch(std::vector<Watched>& out, Service* service)
{
    if (!service)
        return;
    auto lastId = [service = QPointer<Service>(service)]() -> std::optional<qint64> {
        if (!service)
            return std::nullopt;
        const auto& history = service->monitor().history();
        if (history.isEmpty())
            return std::nullopt;
        return history.last().id;
    };
    out.push_back({service, service->serverActive(), lastId, lastId()});
}

} // namespace

QByteArray captureSnapshot(SnapshotGatherer& gatherer, std::chrono::milliseconds patience)
{
    const SnapshotServices& services = gatherer.services();
    std::vector<Watched> watched;
    watch(watched, services.cpu.data());
    watch(watched, services.memory.data());
    watch(watched, services.disk.data());
    watch(watched, services.network.data());

    for (Watched& w : watched) {
        w.service->setServerActive(true);
        w.service->updateMonitoring();
    }
    gatherer.cacheSystem(); // while the first interval passes

    const QDeadlineTimer deadline(patience);
    const auto allFresh = [&] {
        for (const Watched& w : watched) {
            // A service deleted meanwhile can give nothing more.
            if (!w.service || !w.hasFreshSample())
                return false;
        }
        return true;
    };
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (allFresh() || deadline.hasExpired())
            loop.quit();
    });
    poll.start(std::chrono::milliseconds(20));
    if (!allFresh())
        loop.exec();

    const QByteArray text = encodeJSON(gatherer.makeSnapshot());
    for (const Watched& w : watched) {
        if (!w.service)
            continue;
        w.service->setServerActive(w.wasServerActive);
        w.service->updateMonitoring();
    }
    return text;
}

} // namespace tallowmere
