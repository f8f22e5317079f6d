#include "monitors/CPUMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"

#include "tests/support/ManualScheduler.h"

#include <gtest/gtest.h>

#include <atomic>

using namespace tallowmere;
using namespace std::chrono_literals;

namespace {

// Monitors that read nothing real and count their readings, so loops can be watched.
struct CountingSources {
    int ticks = 0;
    std::atomic<int> programs = 0;
    std::shared_ptr<test::ManualScheduler> scheduler = std::make_shared<test::ManualScheduler>();

    std::unique_ptr<CPUMonitor> cpu()
    {
        return std::make_unique<CPUMonitor>(CPUSources{[this] { ++ticks; return std::optional<CPUTicks>(); },
                                                       [] { return ProcessSnapshot{}; }},
                                            scheduler);
    }
    std::unique_ptr<MemoryMonitor> memory()
    {
        return std::make_unique<MemoryMonitor>(MemorySources{
            [] { return std::optional<MemoryCounters>(); },
            [this] { ++programs; return ProgramMemoryMap{}; }}, scheduler);
    }
};

} // namespace

TEST(MonitoringService, OneLoopWhateverTheOrderOfFlagChanges)
{
    CountingSources sources;
    CPUMonitoringService service(sources.cpu());
    EXPECT_EQ(service.monitor().monitoringTask(), nullptr);

    service.setMenuBarActive(true);
    EXPECT_EQ(service.monitor().monitoringTask(), nullptr) << "assigning a flag starts nothing";
    service.updateMonitoring();
    const LoopTask* loop = service.monitor().monitoringTask();
    ASSERT_NE(loop, nullptr);
    EXPECT_EQ(sources.ticks, 1) << "the first sample is taken at once";

    // Page opened (with its per-process loop) and closed, repeated calls: still the same loop.
    service.setPageActive(true);
    service.updateMonitoring();
    service.updateMonitoring();
    service.monitor().startProcessMonitoring();
    const LoopTask* processLoop = service.monitor().processTask();
    service.monitor().startProcessMonitoring();
    EXPECT_EQ(service.monitor().processTask(), processLoop);
    service.monitor().stopProcessMonitoring();
    service.setPageActive(false);
    service.updateMonitoring();
    EXPECT_EQ(service.monitor().monitoringTask(), loop);
    EXPECT_EQ(service.monitor().processTask(), nullptr);
    EXPECT_EQ(sources.ticks, 1);

    // Clearing the last flag cancels in the same call; setting one again starts a new loop.
    service.setMenuBarActive(false);
    service.updateMonitoring();
    EXPECT_EQ(service.monitor().monitoringTask(), nullptr);
    service.setServerActive(true);
    service.updateMonitoring();
    EXPECT_NE(service.monitor().monitoringTask(), nullptr);
    EXPECT_EQ(sources.ticks, 2);

    // Then one sample a second, and none once the last consumer is gone.
    sources.scheduler->advance(3s);
    EXPECT_EQ(sources.ticks, 5);
    service.setServerActive(false);
    service.updateMonitoring();
    sources.scheduler->advance(3s);
    EXPECT_EQ(sources.ticks, 5);
}

TEST(MonitoringService, MemoryRunsItsPerProgramLoopWheneverActive)
{
    CountingSources sources;
    MemoryMonitoringService service(sources.memory());
    service.setServerActive(true);
    service.updateMonitoring();
    ASSERT_NE(service.monitor().perProcessTask(), nullptr);
    test::finishDetachedWork();
    EXPECT_EQ(sources.programs, 1);
    // Every two seconds, counted from the end of the previous collection.
    sources.scheduler->advance(1999ms);
    EXPECT_EQ(sources.programs, 1);
    sources.scheduler->advance(1ms);
    test::finishDetachedWork();
    EXPECT_EQ(sources.programs, 2);

    service.setServerActive(false);
    service.updateMonitoring();
    EXPECT_EQ(service.monitor().monitoringTask(), nullptr);
    EXPECT_EQ(service.monitor().perProcessTask(), nullptr);
}
