// The Network page's cards: the usage-history card switching range over the 90-day history
// (click to both answers on screen and painted), and the live disk and network cards taking a
// new sample and repainting. "CPU" is the main thread's time: the history queries run on the
// store's worker, so a switch costs the main thread only the redraw. graph_ms is the time until
// the bars show the new range; the top apps follow with the second answer. all_threads_cpu_ms
// adds the worker's queries to the main thread's share.
#include "app/AppServices.h"
#include "app/WindowSeam.h"
#include "bench/support/PrivateServices.h"
#include "bench/support/UsageHistoryFile.h"
#include "core/AppSettings.h"
#include "core/PreferencesStore.h"
#include "history/NetworkMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "ui/components/Theme.h"
#include "ui/live/LiveCards.h"
#include "ui/live/LiveRateCard.h"
#include "ui/live/UsageHistoryCard.h"
#include "ui/pages/InventoryPage.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <ctime>

using namespace tallowmere;

namespace {

// CPU time of every thread of the process: on a busy machine the switch's real time is mostly
// waiting for a core, while this is what it costs.
double processCpuMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// Runs `change`, then events until the card has both answers it caused, then paints it.
// Returns the milliseconds until the graph had its new series (the first answer).
template <class Change>
double untilAnswered(UsageHistoryCard& card, Change change)
{
    int answers = 0;
    double graphMs = 0;
    QElapsedTimer clock;
    QObject context;
    QObject::connect(&card.model(), &NetworkHistoryViewModel::bucketsChanged, &context, [&] {
        ++answers;
        graphMs = double(clock.nsecsElapsed()) / 1e6;
    });
    QObject::connect(&card.model(), &NetworkHistoryViewModel::appsChanged, &context, [&] { ++answers; });
    clock.start();
    change();
    while (answers < 2)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    card.repaint();
    return graphMs;
}

// From the 1H range to the one given, the card on screen.
void BM_HistoryCardSwitchRange(benchmark::State& state)
{
    NetworkUsageStore& store = usageHistoryStore();
    QTemporaryDir dir;
    PreferencesStore preferences(dir.filePath(QStringLiteral("preferences.json")));
    AppSettings settings(preferences);
    UsageHistoryCard card(Theme::darkTheme(), Theme::darkTheme().colors.network, store, settings,
                          [] { return fromUnixSeconds(kHistoryFileNow); });
    card.resize(900, 760);
    const auto target = static_cast<HistoryRange>(state.range(0));
    const auto switchTo = [&](HistoryRange range) { return untilAnswered(card, [&] { card.rangeButton(range)->click(); }); };
    untilAnswered(card, [&] { card.show(); });
    double graphMs = 0;
    double processCpuMs = 0;
    for (auto _ : state) {
        state.PauseTiming();
        switchTo(HistoryRange::hour);
        state.ResumeTiming();
        const double before = processCpuMilliseconds();
        graphMs += switchTo(target);
        processCpuMs += processCpuMilliseconds() - before;
    }
    state.counters["graph_ms"] = benchmark::Counter(graphMs, benchmark::Counter::kAvgIterations);
    state.counters["all_threads_cpu_ms"] = benchmark::Counter(processCpuMs, benchmark::Counter::kAvgIterations);
    state.SetLabel(historyRangeInfo(target).label);
}
BENCHMARK(BM_HistoryCardSwitchRange)->DenseRange(1, 3)->Unit(benchmark::kMillisecond)->UseRealTime();

// The container on a private preferences file with every switch off: the live cards of the
// Storage and Network pages over this machine's real monitors.
struct LivePages {
    QTemporaryDir dir;
    std::unique_ptr<AppServices> services;
    std::unique_ptr<InventoryPage> page;

    explicit LivePages(SpecCategory category)
    {
        services = bench::makePrivateServices(dir.path());
        page = std::make_unique<InventoryPage>(Theme::darkTheme(), PageRecord{.category = category, .hasLiveCards = true});
        addLiveCards(Theme::darkTheme(), makeWindowServices(*services), category, *page);
        page->resize(1000, 800);
        page->show();
        QApplication::processEvents();
    }
    LiveRateCard& card() const { return *page->findChild<LiveRateCard*>(); }
};

// One sample with a full minute of history behind it: the monitor's cycle, the card's update
// and its repaint.
template <class Sample>
void repaintPerSample(benchmark::State& state, SpecCategory category, Sample sample)
{
    LivePages pages(category);
    for (int i = 0; i < 61; ++i)
        sample(*pages.services);
    for (auto _ : state) {
        sample(*pages.services);
        pages.card().repaint();
    }
}

void BM_LiveDiskCardSample(benchmark::State& state)
{
    repaintPerSample(state, SpecCategory::storage, [](AppServices& s) { s.diskService().monitor().sample(); });
}
BENCHMARK(BM_LiveDiskCardSample)->Unit(benchmark::kMicrosecond);

void BM_LiveNetworkCardSample(benchmark::State& state)
{
    repaintPerSample(state, SpecCategory::network, [](AppServices& s) { s.networkService().monitor().runThroughputCycle(); });
}
BENCHMARK(BM_LiveNetworkCardSample)->Unit(benchmark::kMicrosecond);

// The monitors' cycles alone, to tell the card's share from the reading of /proc.
void BM_MonitorCyclesAlone(benchmark::State& state)
{
    LivePages pages(SpecCategory::summary);
    for (auto _ : state) {
        pages.services->diskService().monitor().sample();
        pages.services->networkService().monitor().runThroughputCycle();
    }
}
BENCHMARK(BM_MonitorCyclesAlone)->Unit(benchmark::kMicrosecond);

} // namespace
