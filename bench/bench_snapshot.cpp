// Cost of one statistics snapshot: copying the live figures, reading the battery afresh, and
// encoding the document as /stats sends it.
#include "hardware/SystemInfo.h"
#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryInfo.h"
#include "server/MetricsText.h"
#include "app/SnapshotGatherer.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <benchmark/benchmark.h>

using namespace tallowmere;

namespace {

// The four services of the program, sampled for a little over a second so every figure
// (rates included) holds a real value.
struct LiveServices {
    CPUMonitoringService cpu;
    MemoryMonitoringService memory;
    DiskMonitoringService disk;
    NetworkMonitoringService network;

    LiveServices()
    {
        for (MonitoringService* s : std::initializer_list<MonitoringService*>{&cpu, &memory, &disk, &network}) {
            s->setServerActive(true);
            s->updateMonitoring();
        }
        QEventLoop loop;
        QTimer::singleShot(1200, &loop, &QEventLoop::quit);
        loop.exec();
    }
    SnapshotServices weak() { return {&cpu, &memory, &disk, &network}; }
};

LiveServices& live()
{
    static LiveServices services;
    return services;
}

// Everything /stats does per request: gather (with the machine's battery reader) and encode.
void BM_SnapshotGatherAndEncode(benchmark::State& state)
{
    SnapshotGatherer gatherer;
    gatherer.setServices(live().weak());
    gatherer.cacheSystem();
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeJSON(gatherer.makeSnapshot()));
}

// The same without the battery read, to show what the read itself costs.
void BM_SnapshotWithoutBatteryRead(benchmark::State& state)
{
    SnapshotGatherer gatherer([] { return BatteryInfo::noBattery(); }, [] { return SystemInfo::current(); });
    gatherer.setServices(live().weak());
    gatherer.cacheSystem();
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeJSON(gatherer.makeSnapshot()));
}

void BM_BatteryRead(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(BatteryInfo::current());
}

void BM_EncodeOnly(benchmark::State& state)
{
    SnapshotGatherer gatherer;
    gatherer.setServices(live().weak());
    gatherer.cacheSystem();
    const StatsSnapshot snapshot = gatherer.makeSnapshot();
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeJSON(snapshot));
}

void BM_MetricsTextOnly(benchmark::State& state)
{
    SnapshotGatherer gatherer;
    gatherer.setServices(live().weak());
    gatherer.cacheSystem();
    const StatsSnapshot snapshot = gatherer.makeSnapshot();
    for (auto _ : state)
        benchmark::DoNotOptimize(metricsText(snapshot));
}

} // namespace

BENCHMARK(BM_SnapshotGatherAndEncode)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SnapshotWithoutBatteryRead)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_BatteryRead)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_EncodeOnly)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MetricsTextOnly)->Unit(benchmark::kMicrosecond);
