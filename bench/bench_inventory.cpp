// Cost of the on-demand readings: one inventory gathering, the pci.ids lookups inside it, and
// one battery reading (UPower over the bus when there is one, plus the power-supply class).
#include "hardware/SystemInfo.h"
#include "hardware/SystemInfoParsers.h"
#include "power/BatteryInfo.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

using namespace tallowmere;

static void BM_SystemInfoCurrent(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(SystemInfo::current());
}
BENCHMARK(BM_SystemInfoCurrent)->Unit(benchmark::kMillisecond);

static void BM_PciIdsLoadAndName(benchmark::State& state)
{
    const QStringList dirs{QStringLiteral("/usr/share/hwdata"), QStringLiteral("/usr/share/misc")};
    for (auto _ : state) {
        const auto pci = inventory::HardwareIdDatabase::load(dirs, QStringLiteral("pci.ids"));
        // A vendor near the end of the file: the worst case of the linear search.
        benchmark::DoNotOptimize(inventory::pciDisplayName(pci, QStringLiteral("0x8086"), QStringLiteral("0x9a49")));
    }
}
BENCHMARK(BM_PciIdsLoadAndName)->Unit(benchmark::kMillisecond);

static void BM_PciIdsLookupOnly(benchmark::State& state)
{
    const auto pci = inventory::HardwareIdDatabase::load({QStringLiteral("/usr/share/hwdata")}, QStringLiteral("pci.ids"));
    for (auto _ : state)
        benchmark::DoNotOptimize(pci.deviceName(QStringLiteral("8086"), QStringLiteral("9a49")));
}
BENCHMARK(BM_PciIdsLookupOnly)->Unit(benchmark::kMicrosecond);

static void BM_BatteryInfoCurrent(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(BatteryInfo::current());
}
BENCHMARK(BM_BatteryInfoCurrent)->Unit(benchmark::kMicrosecond);
