// The tray's cost: one redraw of everything the panel gets when a figure changes, and the
// whole program running for a minute with the tray on, the popover closed and the main window
// closed (its resident memory counts the window and the popover, both created).
#include "app/AppLifecycle.h"
#include "app/AppServices.h"
#include "app/WindowSeam.h"
#include "ui/tray/LiveIcon.h"
#include "ui/tray/MenuBarController.h"
#include "ui/tray/StatusNotifierItem.h"
#include "ui/tray/StripRenderer.h"

#include <QApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

using namespace tallowmere;

namespace {

StripFigures busyFigures(int round)
{
    StripFigures f;
    for (int i = 0; i < 60; ++i) {
        f.cpuHistory.append((i * 37 + round) % 100);
        f.memoryHistory.append(40 + (i + round) % 20);
    }
    f.cpu = f.cpuHistory.last();
    f.memory = f.memoryHistory.last();
    f.download = 1536.0 * round;
    f.upload = 20480;
    f.batteryTime = QStringLiteral("2:05");
    return f;
}

double processCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

long residentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLong();
    return 0;
}

// The strip drawn at a density of 1 and 2 (argument), as the popover's head draws it.
void BM_StripRedraw(benchmark::State& state)
{
    int round = 0;
    const qreal dpr = qreal(state.range(0));
    StripFigures figures = busyFigures(0);
    for (auto _ : state) {
        state.PauseTiming();
        figures = busyFigures(++round);
        state.ResumeTiming();
        QImage image = StripRenderer::render(figures, dpr, Qt::white);
        benchmark::DoNotOptimize(image);
    }
}
BENCHMARK(BM_StripRedraw)->Arg(1)->Arg(2)->MeasureProcessCPUTime()->UseRealTime();

// Everything a changed figure costs the panel: every icon size turned into the wire format,
// the label, its guide and the tooltip.
void BM_TrayPublishRound(benchmark::State& state)
{
    int round = 0;
    for (auto _ : state) {
        const StripFigures f = busyFigures(++round);
        TrayPixmaps pixmaps;
        for (int size : LiveIcon::sizes())
            pixmaps.append(TrayPixmap::fromImage(LiveIcon::render(f, size)));
        QString texts = stripLabel(f) + stripLabelGuide(f) + stripToolTip(f);
        benchmark::DoNotOptimize(pixmaps);
        benchmark::DoNotOptimize(texts);
    }
}
BENCHMARK(BM_TrayPublishRound)->MeasureProcessCPUTime()->UseRealTime();

void waitMs(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

// A panel's watcher on the session bus, when the bench runs on a bus without one, so the
// item is published over D-Bus as on a desktop.
class StandInWatcher : public QDBusVirtualObject {
public:
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        connection.send(message.createReply());
        return true;
    }
    QString introspect(const QString&) const override { return {}; }
};

// The program as a user leaves it: launched with the tray on, the main window closed again.
void BM_ProgramWithTrayIdle(benchmark::State& state)
{
    QTemporaryDir home;
    AppEnvironment options = AppEnvironment::forThisMachine();
    options.roots.config = home.path();
    options.roots.data = home.path();
    options.feedUrl = QUrl();
    options.serverPort = 0;
    StandInWatcher watcher;
    QDBusConnection panel = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("bench-panel"));
    if (panel.isConnected() && !panel.interface()->isServiceRegistered(QString::fromLatin1(StatusNotifierItem::kWatcherService))) {
        panel.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), &watcher);
        panel.registerService(QString::fromLatin1(StatusNotifierItem::kWatcherService));
    }
    for (auto _ : state) {
        auto services = std::make_unique<AppServices>(options);
        services->settings().setMenuBarEnabled(true);
        WindowSeam seam([] {});
        AppLifecycle delegate(seam, [&]() -> AppServices& { return *services; });
        services->launch(delegate);
        seam.showMainWindow();
        waitMs(3000);
        for (QWidget* window : QApplication::topLevelWidgets())
            window->close();
        waitMs(5000);  // the first samples and the per-process walk of the closed page settle

        const double before = processCpuSeconds();
        const int seconds = int(state.range(0));
        waitMs(seconds * 1000);
        const double used = processCpuSeconds() - before;
        state.counters["cpu_percent_of_one_core"] = 100.0 * used / seconds;
        state.counters["resident_MB"] = double(residentKilobytes()) / 1024.0;
        state.counters["tray_item_installed"] = services->menuBarController().hasStatusItem();
        state.counters["published_over_dbus"] = services->menuBarController().usesStatusNotifier();
        state.counters["popover_created"] = services->menuBarController().popover() != nullptr;
    }
}
BENCHMARK(BM_ProgramWithTrayIdle)->Arg(60)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace
