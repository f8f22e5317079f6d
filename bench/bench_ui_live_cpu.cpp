// The CPU and memory pages' live cards: main-thread CPU time to show a new sample and to
// refresh the CPU page's process list with 1,000 processes (the "CPU" column), and the share of one core the whole
// windowed program takes while the CPU page is open. Drawn on the offscreen platform.
#include "app/AppLifecycle.h"
#include "app/AppServices.h"
#include "app/WindowSeam.h"
#include "bench/support/PrivateServices.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "ui/components/Theme.h"
#include "ui/live/LiveCards.h"
#include "ui/live/ProcessList.h"
#include "ui/live/ProcessTableView.h"
#include "ui/pages/InventoryPage.h"
#include "ui/window/MainWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/resource.h>

#include <benchmark/benchmark.h>

using namespace tallowmere;

namespace {

// A container on private folders; with `switchesOff` nothing but the window makes anything sample.
struct Program {
    QTemporaryDir dir;
    std::unique_ptr<AppServices> services;

    explicit Program(bool switchesOff)
    {
        services = bench::makePrivateServices(dir.path(), switchesOff);
    }
};

// Processes whose shares change every round, so rows change their figures and places.
ProcessSnapshot snapshot(int processes, int round)
{
    ProcessSnapshot s;
    s.time = std::chrono::system_clock::time_point{} + std::chrono::seconds(2 * round);
    for (int pid = 1; pid <= processes; ++pid) {
        const auto jitter = (std::uint64_t(pid) * 7919 + std::uint64_t(round) * 104729) % 1000;
        s.cpuTime[pid] = std::uint64_t(round) * 1'000'000'000ull + jitter * 1'000'000ull;
        s.memory[pid] = std::uint64_t(pid) << 16;
        s.names[pid] = QStringLiteral("process-%1").arg(pid % 97);
    }
    return s;
}

// The CPU page on screen, fed by a monitor whose readings the benchmark hands in; its own
// loops are stopped so only the benchmark's samples arrive.
struct CpuPage {
    Program program{true};
    std::uint32_t ticks = 0;
    CPUMonitoringService cpu{std::make_unique<CPUMonitor>(CPUSources{
        [this] {
            ticks += 100;
            return std::optional<CPUTicks>(CPUTicks{ticks / 2 + ticks % 7, ticks / 5, ticks / 4, 0});
        },
        [] { return ProcessSnapshot{}; }})};
    InventoryPage page{Theme::darkTheme(), makeSpecPage(SpecCategory::cpu, gatherMachineInputs())};

    CpuPage()
    {
        WindowServices services = makeWindowServices(*program.services);
        services.cpu = &cpu;
        addLiveCards(Theme::darkTheme(), services, SpecCategory::cpu, page);
        page.resize(1000, 1600);
        page.show();
        cpu.monitor().stopMonitoring();
        cpu.monitor().stopProcessMonitoring();
        for (int i = 0; i < 60; ++i)
            cpu.monitor().sample();
        QApplication::processEvents();
    }
};

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

} // namespace

// A sample published (figures, legend and a 60-point graph) to the end of its repaint.
static void BM_CpuPageRepaintsANewSample(benchmark::State& state)
{
    CpuPage p;
    for (auto _ : state) {
        p.cpu.monitor().sample();
        QApplication::processEvents();
    }
}
BENCHMARK(BM_CpuPageRepaintsANewSample)->Unit(benchmark::kMillisecond);

// The memory page likewise: figures, breakdown and graph for one sample, with its program list.
static void BM_MemoryPageRepaintsANewSample(benchmark::State& state)
{
    Program program(true);
    std::uint64_t used = 6ull << 30;
    MemoryMonitoringService memory(std::make_unique<MemoryMonitor>(MemorySources{
        [&used] {
            used += 1 << 20;
            return std::optional<MemoryCounters>(MemoryCounters{16ull << 30, used, 1ull << 30, 0});
        },
        [] { return ProgramMemoryMap{}; }}));
    InventoryPage page(Theme::darkTheme(), makeSpecPage(SpecCategory::ram, gatherMachineInputs()));
    WindowServices services = makeWindowServices(*program.services);
    services.memory = &memory;
    addLiveCards(Theme::darkTheme(), services, SpecCategory::ram, page);
    page.resize(1000, 1600);
    page.show();
    memory.setPageActive(false);
    memory.updateMonitoring();
    ProgramMemoryMap programs;
    for (int i = 0; i < 120; ++i)
        programs[QStringLiteral("program-%1").arg(i)] = {std::uint64_t(i + 1) << 22, i % 4 + 1};
    memory.monitor().applyPrograms(programs);
    for (int i = 0; i < 60; ++i)
        memory.monitor().sample();
    QApplication::processEvents();
    for (auto _ : state) {
        memory.monitor().sample();
        QApplication::processEvents();
    }
}
BENCHMARK(BM_MemoryPageRepaintsANewSample)->Unit(benchmark::kMillisecond);

// A new list of N processes handed to the page (sorted by CPU, rows changing places) to the
// end of its repaint. The page keeps its selection and scroll position through it.
static void BM_CpuPageRefreshesItsProcessList(benchmark::State& state)
{
    CpuPage p;
    const int processes = int(state.range(0));
    CPUMonitor& monitor = p.cpu.monitor();
    monitor.applySnapshot(snapshot(processes, 0));
    int round = 1;
    monitor.applySnapshot(snapshot(processes, round));
    QApplication::processEvents();
    auto* list = p.page.findChild<ProcessList*>();
    list->view().selectRow(5);
    for (auto _ : state) {
        // The walk runs on a worker thread in the program: made outside the timing.
        state.PauseTiming();
        const ProcessSnapshot next = snapshot(processes, ++round);
        state.ResumeTiming();
        monitor.applySnapshot(next);
        QApplication::processEvents();
    }
    state.counters["rows"] = list->model().rowCount();
}
BENCHMARK(BM_CpuPageRefreshesItsProcessList)->Arg(1000)->Unit(benchmark::kMillisecond);

// The windowed program as launched with its default switches, the CPU page open, for 60 s of
// real time: the share of one core it used (every thread, workers included).
static void BM_ProgramWithCpuPageOpen(benchmark::State& state)
{
    Program program(false);
    AppServices& services = *program.services;
    WindowSeam seam({});
    AppLifecycle delegate(seam, [&services]() -> AppServices& { return services; });
    for (auto _ : state) {
        delegate.onLaunchFinished();
        QApplication::processEvents();
        MainWindow* window = nullptr;
        for (QWidget* w : QApplication::topLevelWidgets())
            if (auto* main = qobject_cast<MainWindow*>(w))
                window = main;
        if (!window) {
            state.SkipWithError("no main window");
            return;
        }
        window->select(SidebarSelection::forCategory(SpecCategory::cpu));
        QEventLoop settle;
        QTimer::singleShot(3000, &settle, &QEventLoop::quit);
        settle.exec();

        const double before = cpuSeconds();
        QEventLoop run;
        QTimer::singleShot(60000, &run, &QEventLoop::quit);
        run.exec();
        state.counters["core_percent"] = (cpuSeconds() - before) / 60.0 * 100.0;
        state.counters["process_rows"] = window->findChild<ProcessList*>()->model().rowCount();
        window->close();
    }
}
BENCHMARK(BM_ProgramWithCpuPageOpen)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
