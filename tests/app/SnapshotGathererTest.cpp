#include "app/SnapshotCapture.h"
#include "app/SnapshotGatherer.h"
#include "tests/support/ManualScheduler.h"
#include "tests/support/TestSupport.h"

#include "hardware/SystemInfo.h"
#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryInfo.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tallowmere {
namespace {

constexpr std::uint64_t GiB = 1ull << 30;

// Real services whose counters move by known steps on every sample, on the scheduler given.
struct MovingServices {
    explicit MovingServices(std::shared_ptr<Scheduler> scheduler = realScheduler())
        : scheduler(std::move(scheduler))
    {
    }

    std::shared_ptr<Scheduler> scheduler;
    std::uint32_t cpuReads = 0;
    std::uint64_t diskReads = 0, netReads = 0;
    CPUMonitoringService cpu{std::make_unique<CPUMonitor>(CPUSources{
        [this] { return std::optional(CPUTicks{100 + 30 * cpuReads, 50 + 10 * cpuReads, 850 + 60 * cpuReads++, 0}); },
        [] { return ProcessSnapshot{}; }}, scheduler)};
    MemoryMonitoringService memory{std::make_unique<MemoryMonitor>(MemorySources{
        [] { return std::optional(MemoryCounters{16 * GiB, 5 * GiB, 2 * GiB, GiB}); }, [] { return ProgramMemoryMap{}; }},
        scheduler)};
    DiskMonitoringService disk{std::make_unique<DiskMonitor>(DiskSources{
        [] { return std::optional(VolumeCapacity{500 * GiB, 200 * GiB}); },
        [this] { return std::optional(DiskCounters{diskReads * 1000000, diskReads++ * 3000000}); },
        [this] { return std::chrono::system_clock::time_point(std::chrono::seconds(diskReads)); }}, scheduler)};
    NetworkMonitoringService network{nullptr, std::make_unique<NetworkMonitor>(NetworkMonitorSources{
        [this] { return ByteCounts{5000 + netReads * 1000, 7000 + netReads++ * 250}; }, [] { return std::optional<FlowSample>(); },
        [](const QString&) { return std::optional<QString>(); }}, scheduler)};

    std::vector<MonitoringService*> all() { return {&cpu, &memory, &disk, &network}; }
};

SystemInfo sampleSystem()
{
    SystemInfo info;
    info.machine = QStringLiteral("x86_64");
    info.cpuCores = 12;
    return info;
}

TEST(SnapshotGatherer, CopiesEveryServicesFiguresAndZerosForThoseGone)
{
    auto scheduler = std::make_shared<test::ManualScheduler>();
    auto live = std::make_unique<MovingServices>(scheduler);
    int systemReads = 0;
    SnapshotGatherer gatherer([] { return BatteryInfo::noBattery(); }, [&] { return ++systemReads, sampleSystem(); });
    gatherer.setServices({&live->cpu, &live->memory, &live->disk, &live->network});
    EXPECT_EQ(gatherer.makeSnapshot().network.sessionDownloadBytes, 0u); // never sampled
    for (MonitoringService* s : live->all()) {
        s->setServerActive(true);
        s->updateMonitoring();
    }
    // Every rate needs a second sample, a period after the first.
    scheduler->advance(std::chrono::seconds(1));
    test::finishDetachedWork();
    ASSERT_FALSE(live->cpu.monitor().history().isEmpty() || live->disk.monitor().history().isEmpty()
                 || live->network.monitor().history().isEmpty());

    gatherer.cacheSystem();
    const StatsSnapshot s = gatherer.makeSnapshot();
    const CPUMonitor& cpu = live->cpu.monitor();
    EXPECT_EQ(std::vector<double>({s.cpu.usagePercent, s.cpu.userPercent, s.cpu.systemPercent}),
              std::vector<double>({cpu.currentUsage(), cpu.userUsage(), cpu.systemUsage()}));
    EXPECT_GT(s.cpu.userPercent, s.cpu.systemPercent); // distinct, so a mix-up would show
    EXPECT_EQ(std::vector<double>({s.memory.usagePercent, s.memory.usedGB, s.memory.freeGB, s.memory.totalGB,
                                   s.memory.activeGB, s.memory.wiredGB, s.memory.compressedGB}),
              std::vector<double>({50, 8, 8, 16, 5, 2, 1}));
    EXPECT_EQ(std::vector<double>({s.disk.usagePercent, s.disk.usedGB, s.disk.freeGB, s.disk.totalGB}),
              std::vector<double>({60, 300, 200, 500}));
    EXPECT_EQ(s.disk.writeBytesPerSec, live->disk.monitor().writeBytesPerSec());
    EXPECT_EQ(std::vector<double>({s.network.downloadBytesPerSec, s.network.uploadBytesPerSec}), std::vector<double>({1000, 250}));
    EXPECT_EQ(s.network.sessionUploadBytes, live->network.monitor().sessionUpload());
    EXPECT_EQ(s.system.model, QStringLiteral("x86_64")); // no model identifier: the machine name
    EXPECT_EQ(s.system.logicalCores, 12);

    gatherer.cacheSystem();
    live.reset();
    const StatsSnapshot after = gatherer.makeSnapshot();
    EXPECT_EQ(after.memory.totalGB, 0);
    EXPECT_EQ(after.network.sessionUploadBytes, 0u);
    EXPECT_EQ(after.system.logicalCores, 12);
    EXPECT_EQ(systemReads, 2); // once for the uncached snapshot, once for the cache
}

TEST(SnapshotCapture, WaitsForRealRatesAndRestoresTheFlags)
{
    MovingServices live;
    live.cpu.setMenuBarActive(true); // another consumer whose loop must go on
    live.cpu.updateMonitoring();
    SnapshotGatherer gatherer([] { return BatteryInfo::noBattery(); }, sampleSystem);
    gatherer.setServices({&live.cpu, &live.memory, &live.disk, &live.network});

    const auto document = nlohmann::json::parse(captureSnapshot(gatherer).toStdString());
    EXPECT_GT(document["cpu"]["usagePercent"].get<double>(), 0);
    EXPECT_GT(document["disk"]["readBytesPerSec"].get<double>(), 0);
    EXPECT_EQ(document["network"]["downloadBytesPerSec"], 1000);
    for (MonitoringService* s : live.all())
        EXPECT_FALSE(s->serverActive());
    const std::uint64_t diskReads = live.diskReads;
    const std::uint32_t cpuReads = live.cpuReads;
    EXPECT_TRUE(test::waitUntil([&] { return live.cpuReads > cpuReads; }));
    EXPECT_EQ(live.diskReads, diskReads); // its loop ended with the capture
}

} // namespace
} // namespace tallowmere
