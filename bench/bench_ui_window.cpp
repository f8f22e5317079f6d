// The main window: shown to the first paint of Summary, switching pages, resident memory of the
// windowed program with every page visited, and whether anything still samples once the
// window is closed. Drawn on the offscreen platform.
#include "app/AppLifecycle.h"
#include "app/AppServices.h"
#include "app/WindowSeam.h"
#include "bench/support/PrivateServices.h"
#include "monitors/CPUMonitor.h"
#include "monitors/DiskMonitor.h"
#include "monitors/MemoryMonitor.h"
#include "ui/components/Theme.h"
#include "ui/window/MainWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

using namespace tallowmere;

namespace {

// Notes the first paint of a widget or anything inside it.
class PaintProbe : public QObject {
public:
    explicit PaintProbe(QWidget* target) : target_(target) { qApp->installEventFilter(this); }
    ~PaintProbe() override { qApp->removeEventFilter(this); }
    // Gives up after a second so a page that needs no repaint cannot stall the run.
    void waitForPaint()
    {
        QElapsedTimer clock;
        clock.start();
        while (!painted_ && clock.elapsed() < 1000)
            QApplication::processEvents(QEventLoop::AllEvents, 5);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            auto* widget = qobject_cast<QWidget*>(watched);
            if (widget && (widget == target_ || target_->isAncestorOf(widget)))
                painted_ = true;
        }
        return false;
    }

private:
    QWidget* target_;
    bool painted_ = false;
};

// The container on a private preferences file with every switch off, so nothing but the
// window's own pages could make the monitors sample.
struct Program {
    QTemporaryDir dir;
    std::unique_ptr<AppServices> services;

    Program()
    {
        services = bench::makePrivateServices(dir.path());
    }
};

void visit(MainWindow& window, const SidebarSelection& selection)
{
    if (window.history().selection() == selection)
        return;
    PaintProbe probe(&window);
    window.select(selection);
    probe.waitForPaint();
}

QList<SidebarSelection> everyPage()
{
    QList<SidebarSelection> pages;
    for (SpecCategory category : allSpecCategories())
        pages.append(SidebarSelection::forCategory(category));
    pages.append(SidebarSelection::settingsPage());
    return pages;
}

long residentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    status.open(QIODevice::ReadOnly);
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLong();
    return 0;
}

} // namespace

// From creating the window (the inventory gathered with it) to the first paint of Summary.
static void BM_WindowShownToFirstPaintOfSummary(benchmark::State& state)
{
    Program program;
    for (auto _ : state) {
        MainWindow window(Theme::desktopTheme(), makeWindowServices(*program.services));
        PaintProbe probe(&window);
        window.show();
        probe.waitForPaint();
        state.PauseTiming();
        window.hide();
        state.ResumeTiming();
    }
}
// The first window of the process pays for fonts, styles and icons once: run before the others.
BENCHMARK(BM_WindowShownToFirstPaintOfSummary)->Name("BM_FirstWindowOfTheProcess")->Iterations(1)
    ->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_WindowShownToFirstPaintOfSummary)->Unit(benchmark::kMillisecond)->UseRealTime();

// Reopening the hidden window (the tray's open action) to its first paint.
static void BM_WindowReopenedToFirstPaint(benchmark::State& state)
{
    Program program;
    MainWindow window(Theme::desktopTheme(), makeWindowServices(*program.services));
    for (auto _ : state) {
        PaintProbe probe(&window);
        window.show();
        probe.waitForPaint();
        state.PauseTiming();
        window.hide();
        QApplication::processEvents();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_WindowReopenedToFirstPaint)->Unit(benchmark::kMillisecond)->UseRealTime();

// Selecting a page to its first paint; arg 0 = a page seen before, 1 = a page built on first view.
static void BM_SwitchPage(benchmark::State& state)
{
    Program program;
    const QList<SidebarSelection> pages = everyPage();
    auto window = std::make_unique<MainWindow>(Theme::desktopTheme(), makeWindowServices(*program.services));
    window->show();
    const bool firstVisit = state.range(0) == 1;
    if (!firstVisit)
        for (const SidebarSelection& page : pages)
            visit(*window, page);
    qsizetype next = 1;
    for (auto _ : state) {
        if (firstVisit && next == pages.size()) {
            state.PauseTiming();
            window = std::make_unique<MainWindow>(Theme::desktopTheme(), makeWindowServices(*program.services));
            window->show();
            next = 1;
            state.ResumeTiming();
        }
        visit(*window, pages[next % pages.size()]);
        ++next;
    }
}
BENCHMARK(BM_SwitchPage)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// The windowed program as it runs: the container launched with the window, every page visited;
// then the window closed and two seconds watched for any sample.
static void BM_WindowedProgramMemoryAndIdleAfterClose(benchmark::State& state)
{
    Program program;
    AppServices& services = *program.services;
    WindowSeam seam({});
    AppLifecycle delegate(seam, [&services]() -> AppServices& { return services; });
    for (auto _ : state) {
        delegate.onLaunchFinished();
        QApplication::processEvents();
        QApplication::processEvents();
        auto* window = qobject_cast<MainWindow*>(QApplication::activeWindow());
        for (QWidget* w : QApplication::topLevelWidgets())
            if (auto* main = qobject_cast<MainWindow*>(w))
                window = main;
        if (!window) {
            state.SkipWithError("no main window");
            return;
        }
        for (const SidebarSelection& page : everyPage())
            visit(*window, page);
        state.counters["resident_MB"] = residentKilobytes() / 1024.0;

        window->close();
        int samples = 0;
        const auto count = [&samples] { ++samples; };
        QObject::connect(&services.cpuService().monitor(), &CPUMonitor::historyChanged, count);
        QObject::connect(&services.memoryService().monitor(), &MemoryMonitor::historyChanged, count);
        QObject::connect(&services.diskService().monitor(), &DiskMonitor::historyChanged, count);
        QEventLoop wait;
        QTimer::singleShot(2000, &wait, &QEventLoop::quit);
        wait.exec();
        state.counters["samples_after_close"] = samples;
        int pageDemand = 0;
        for (MonitoringService* s : std::initializer_list<MonitoringService*>{&services.cpuService(), &services.memoryService(),
                                                                             &services.diskService(), &services.networkService()})
            pageDemand += s->pageActive() ? 1 : 0;
        state.counters["page_demand_after_close"] = pageDemand;
    }
}
BENCHMARK(BM_WindowedProgramMemoryAndIdleAfterClose)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// The inventory the window gathers when it is created and on Refresh.
static void BM_GatherMachineInputs(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(gatherMachineInputs());
}
BENCHMARK(BM_GatherMachineInputs)->Unit(benchmark::kMillisecond)->UseRealTime();
