// Cost of one camera poll pass: the walk over every process's open descriptors that tells
// which cameras are streaming, and the whole pass over this machine's video nodes.
#include "hardware/CameraScanner.h"

#include <QDir>

#include <benchmark/benchmark.h>

#include <unistd.h>

using namespace tallowmere;

namespace {

void BM_CameraHoldersWalk(benchmark::State& state)
{
    const int processes = static_cast<int>(QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs).size());
    std::size_t held = 0;
    for (auto _ : state)
        held = CameraScanner::nodesHeldOpen(QStringLiteral("/proc"), static_cast<int>(::getpid())).size();
    state.counters["processes"] = processes;
    state.counters["held"] = static_cast<double>(held);
}
BENCHMARK(BM_CameraHoldersWalk)->Unit(benchmark::kMillisecond);

void BM_CameraPollPass(benchmark::State& state)
{
    const CameraScanner scanner(makeV4L2DeviceLayer());
    std::size_t cameras = 0;
    for (auto _ : state)
        cameras = scanner.scan().size();
    state.counters["cameras"] = static_cast<double>(cameras);
}
BENCHMARK(BM_CameraPollPass)->Unit(benchmark::kMicrosecond);

} // namespace

