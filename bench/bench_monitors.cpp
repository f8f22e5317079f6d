// CPU cost of one sample of each monitor, of the per-process walk and of one ps collection.
#include "monitors/CPUMonitor.h"
#include "monitors/DiskMonitor.h"
#include "monitors/MemoryMonitor.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <ctime>

using namespace tallowmere;

namespace {

void BM_CPUSample(benchmark::State& state)
{
    CPUMonitor monitor;
    for (auto _ : state)
        monitor.sample();
}

void BM_MemorySample(benchmark::State& state)
{
    MemoryMonitor monitor;
    for (auto _ : state)
        monitor.sample();
}

void BM_DiskSample(benchmark::State& state)
{
    DiskMonitor monitor;
    for (auto _ : state)
        monitor.sample();
}

void BM_ProcessWalk(benchmark::State& state)
{
    std::size_t processes = 0;
    for (auto _ : state)
        processes = collectProcessSnapshot().cpuTime.size();
    // Divide the CPU column by this count for the cost per process.
    state.counters["processes"] = static_cast<double>(processes);
}

double processCPUSeconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double childCPUSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](timeval t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// ps is a child process: its own CPU time (counted once it has been waited for) is added to
// ours, so the figure is what one collection costs the machine.
void BM_PsCollection(benchmark::State& state)
{
    const auto collect = linuxMemorySources().collectPrograms;
    std::size_t programs = 0;
    for (auto _ : state) {
        const double before = processCPUSeconds() + childCPUSeconds();
        programs = collect().size();
        state.SetIterationTime(processCPUSeconds() + childCPUSeconds() - before);
    }
    state.counters["programs"] = static_cast<double>(programs);
}

} // namespace

// The CPU column is the figure that counts: the process's CPU time per sample.
BENCHMARK(BM_CPUSample)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MemorySample)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DiskSample)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ProcessWalk)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PsCollection)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);
