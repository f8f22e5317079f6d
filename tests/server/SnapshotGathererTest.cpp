#include "server/SnapshotCapture.h"
#include "server/SnapshotGatherer.h"
#include "server/StatsServer.h"
#include "tests/server/LoopbackClient.h"
#include "tests/support/TestSupport.h"

#include "hardware/SystemInfo.h"
#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryInfo.h"

#include <QThread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tallowmere {
namespace {

constexpr std::uint64_t GiB = 1ull << 30;

// Real services whose monitors read counters that move by known steps on every sample.
struct MovingServices {
    int cpuReads = 0, diskReads = 0, netReads = 0;

    std::unique_ptr<CPUMonitoringService> cpu = std::make_unique<CPUMonitoringService>(std::make_unique<CPUMonitor>(
        CPUSources{[this]() -> std::optional<CPUTicks> {
                       const auto n = static_cast<std::uint32_t>(cpuReads++);
                       return CPUTicks{100 + 30 * n, 50 + 10 * n, 850 + 60 * n, 0};
                   },
                   [] { return ProcessSnapshot{}; }}));
    std::unique_ptr<MemoryMonitoringService> memory = std::make_unique<MemoryMonitoringService>(
        std::make_unique<MemoryMonitor>(MemorySources{[] { return std::optional(MemoryCounters{16 * GiB, 5 * GiB, 2 * GiB, GiB}); },
                                                      [] { return ProgramMemoryMap{}; }}));
    std::unique_ptr<DiskMonitoringService> disk = std::make_unique<DiskMonitoringService>(std::make_unique<DiskMonitor>(
        DiskSources{[] { return std::optional(VolumeCapacity{500 * GiB, 200 * GiB}); },
                    [this] {
                        const auto n = static_cast<std::uint64_t>(diskReads++);
                        return std::optional(DiskCounters{n * 1000000, n * 3000000});
                    }}));
    std::unique_ptr<NetworkMonitoringService> network = std::make_unique<NetworkMonitoringService>(
        nullptr, std::make_unique<NetworkMonitor>(NetworkMonitorSources{
                     [this] {
                         const auto n = static_cast<std::uint64_t>(netReads++);
                         return ByteCounts{5000 + n * 1000, 7000 + n * 250};
                     },
                     [] { return FlowTable{}; }, [](const QString&) { return std::optional<QString>(); }}));

    SnapshotServices weak() const { return {cpu.get(), memory.get(), disk.get(), network.get()}; }
};

SystemInfo sampleSystem()
{
    SystemInfo info;
    info.machine = QStringLiteral("x86_64");
    info.cpuBrand = QStringLiteral("Test CPU @ 2.00GHz");
    info.cpuCores = 12;
    info.memoryGB = 31.25;
    info.osVersion = QStringLiteral("Debian GNU/Linux 12 (bookworm)");
    info.osComputerName = QStringLiteral("bench-host");
    return info;
}

TEST(SnapshotGatherer, CopiesThePublishedFiguresOfEveryService)
{
    MovingServices live;
    SnapshotGatherer gatherer([] { return BatteryInfo::noBattery(); }, sampleSystem);
    gatherer.setServices(live.weak());
    for (MonitoringService* s : std::initializer_list<MonitoringService*>{live.cpu.get(), live.memory.get(),
                                                                          live.disk.get(), live.network.get()}) {
        s->setServerActive(true);
        s->updateMonitoring();
    }
    ASSERT_TRUE(test::waitUntil([&] {
        return !live.cpu->monitor().history().isEmpty() && !live.disk->monitor().history().isEmpty() &&
               !live.network->monitor().history().isEmpty();
    }));

    const StatsSnapshot s = gatherer.makeSnapshot();
    const CPUMonitor& cpu = live.cpu->monitor();
    EXPECT_EQ(s.cpu.usagePercent, cpu.currentUsage());
    EXPECT_EQ(s.cpu.userPercent, cpu.userUsage());
    EXPECT_EQ(s.cpu.systemPercent, cpu.systemUsage());
    EXPECT_GT(s.cpu.usagePercent, s.cpu.userPercent); // distinct figures, so a swap would show
    EXPECT_GT(s.cpu.userPercent, s.cpu.systemPercent);

    EXPECT_EQ(s.memory.totalGB, 16);
    EXPECT_EQ(s.memory.activeGB, 5);
    EXPECT_EQ(s.memory.wiredGB, 2);
    EXPECT_EQ(s.memory.compressedGB, 1);
    EXPECT_EQ(s.memory.usedGB, 8);
    EXPECT_EQ(s.memory.freeGB, 8);
    EXPECT_EQ(s.memory.usagePercent, 50);

    const DiskMonitor& disk = live.disk->monitor();
    EXPECT_EQ(s.disk.totalGB, 500);
    EXPECT_EQ(s.disk.freeGB, 200);
    EXPECT_EQ(s.disk.usedGB, 300);
    EXPECT_EQ(s.disk.usagePercent, 60);
    EXPECT_EQ(s.disk.readBytesPerSec, disk.readBytesPerSec());
    EXPECT_EQ(s.disk.writeBytesPerSec, disk.writeBytesPerSec());
    EXPECT_GT(s.disk.writeBytesPerSec, s.disk.readBytesPerSec);

    EXPECT_EQ(s.network.downloadBytesPerSec, 1000);
    EXPECT_EQ(s.network.uploadBytesPerSec, 250);
    EXPECT_EQ(s.network.sessionDownloadBytes, live.network->monitor().sessionDownload());
    EXPECT_EQ(s.network.sessionUploadBytes, live.network->monitor().sessionUpload());
    EXPECT_GE(s.network.sessionDownloadBytes, 1000u);

    EXPECT_EQ(s.system.logicalCores, 12);
    EXPECT_EQ(s.system.model, QStringLiteral("x86_64")); // no model identifier: the machine name
    EXPECT_EQ(s.timestamp.size(), 20);
    EXPECT_TRUE(s.timestamp.endsWith(u'Z'));
}

TEST(SnapshotGatherer, ServicesThatAreGoneOrNeverSampledGiveZeros)
{
    MovingServices live;
    SnapshotGatherer gatherer([] { return BatteryInfo::noBattery(); }, sampleSystem);
    gatherer.setServices(live.weak());
    // Nothing has sampled yet.
    StatsSnapshot s = gatherer.makeSnapshot();
    EXPECT_EQ(s.network.downloadBytesPerSec, 0);
    EXPECT_EQ(s.network.sessionDownloadBytes, 0u);
    EXPECT_EQ(s.cpu.usagePercent, 0);

    live.memory->setServerActive(true);
    live.memory->updateMonitoring(); // samples at once
    live.memory.reset();
    live.network.reset();
    s = gatherer.makeSnapshot();
    EXPECT_EQ(s.memory.totalGB, 0);
    EXPECT_EQ(s.network.uploadBytesPerSec, 0);
    EXPECT_EQ(s.system.cpuBrand, QStringLiteral("Test CPU @ 2.00GHz")); // the rest is still there
}

TEST(SnapshotGatherer, BatteryIsReadAfreshAndTheMachineOnlyOnceCached)
{
    int batteryReads = 0, systemReads = 0;
    SnapshotGatherer gatherer(
        [&] {
            ++batteryReads;
            return BatteryInfo::noBattery();
        },
        [&] {
            ++systemReads;
            return sampleSystem();
        });
    gatherer.makeSnapshot();
    gatherer.makeSnapshot();
    EXPECT_EQ(systemReads, 2); // gathered for each snapshot while nothing is cached
    gatherer.cacheSystem();
    gatherer.cacheSystem();
    gatherer.makeSnapshot();
    EXPECT_EQ(systemReads, 3);
    EXPECT_EQ(batteryReads, 3);
}

TEST(SnapshotGatherer, BatterySectionCarriesTheDerivedHealth)
{
    struct Case {
        int design, maximum;
        int percent;
        const char* status;
    };
    for (const Case& c : {Case{5000, 5200, 100, "Normal"}, Case{5000, 3990, 80, "Normal"},
                          Case{5000, 2970, 59, "Service Recommended"}, Case{5000, 2990, 60, "Fair"}}) {
        BatteryInfo info;
        info.isPresent = true;
        info.designCapacity = c.design;
        info.maxCapacity = c.maximum;
        info.cycleCount = 120;
        info.powerSource = QStringLiteral("AC Power");
        const auto section = SnapshotGatherer::batterySection(info);
        EXPECT_EQ(section.maximumCapacityPercent, c.percent) << c.maximum;
        EXPECT_EQ(section.healthStatus, QString::fromLatin1(c.status)) << c.maximum;
        EXPECT_EQ(section.cycleCount, 120);
        EXPECT_FALSE(section.percentage.has_value());
    }
    const auto none = SnapshotGatherer::batterySection(BatteryInfo::noBattery());
    EXPECT_FALSE(none.isPresent);
    EXPECT_EQ(none.healthStatus, "Unknown");
    EXPECT_EQ(nlohmann::json::parse(encodeJSON(none).toStdString()).size(), 2u);
}

TEST(SnapshotGatherer, ModelFallsBackToTheMachineNameAndIsLeftOutWithoutEither)
{
    SystemInfo info = sampleSystem();
    info.modelIdentifier = QStringLiteral("20XW00FJUS");
    EXPECT_EQ(SnapshotGatherer::systemSection(info).model, QStringLiteral("20XW00FJUS"));
    info.modelIdentifier.reset();
    info.machine.reset();
    const auto section = SnapshotGatherer::systemSection(info);
    EXPECT_FALSE(section.model.has_value());
    EXPECT_FALSE(encodeJSON(section).contains("model"));
    EXPECT_EQ(section.computerName, QStringLiteral("bench-host"));
    EXPECT_EQ(section.memoryGB, 31.25);
}

TEST(SnapshotCapture, WaitsForRealRatesAndRestoresTheFlags)
{
    MovingServices live;
    live.cpu->setMenuBarActive(true); // another consumer that must keep its loop
    live.cpu->updateMonitoring();
    SnapshotGatherer gatherer([] { return BatteryInfo::noBattery(); }, sampleSystem);
    gatherer.setServices(live.weak());

    const auto document = nlohmann::json::parse(captureSnapshot(gatherer).toStdString());
    EXPECT_GT(document["cpu"]["usagePercent"].get<double>(), 0);
    EXPECT_EQ(document["network"]["downloadBytesPerSec"], 1000);
    EXPECT_GT(document["disk"]["readBytesPerSec"].get<double>(), 0);
    EXPECT_EQ(document["memory"]["usedGB"], 8);
    EXPECT_EQ(document["system"]["logicalCores"], 12);

    for (MonitoringService* s : std::initializer_list<MonitoringService*>{live.cpu.get(), live.memory.get(),
                                                                          live.disk.get(), live.network.get()})
        EXPECT_FALSE(s->serverActive());
    EXPECT_TRUE(live.cpu->menuBarActive());
    const int cpuReads = live.cpu->monitor().history().size();
    const int diskReads = live.diskReads;
    EXPECT_TRUE(test::waitUntil([&] { return live.cpu->monitor().history().size() > cpuReads; }));
    EXPECT_EQ(live.diskReads, diskReads); // the disk loop stopped with the capture
}

// The production path on this machine: real monitors, the machine's own battery and
// inventory readers, answered over loopback.
TEST(StatsServerLive, StatsFromThisMachine)
{
    CPUMonitoringService cpu;
    MemoryMonitoringService memory;
    cpu.setServerActive(true);
    cpu.updateMonitoring();
    memory.setServerActive(true);
    memory.updateMonitoring();
    StatsServer server(0);
    server.setServices({&cpu, &memory, nullptr, nullptr});
    server.start();
    ASSERT_TRUE(server.isRunning());
    ASSERT_TRUE(test::waitUntil([&] { return !cpu.monitor().history().isEmpty(); }));

    const auto response = test::parseResponse(test::exchange(server.listeningPort(), "GET /stats HTTP/1.1\r\n\r\n").received);
    ASSERT_EQ(response.statusLine, "HTTP/1.1 200 OK");
    const auto document = nlohmann::json::parse(response.body.toStdString());
    EXPECT_EQ(document["system"]["logicalCores"], QThread::idealThreadCount());
    EXPECT_FALSE(document["system"]["osVersion"].get<std::string>().empty());
    EXPECT_GT(document["memory"]["totalGB"].get<double>(), 0);
    EXPECT_EQ(document["disk"]["totalGB"], 0); // no disk service handed over
    EXPECT_TRUE(document["battery"].contains("isPresent"));
    EXPECT_TRUE(document["battery"].contains("healthStatus"));
}

} // namespace
} // namespace tallowmere
