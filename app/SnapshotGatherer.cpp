#include "app/SnapshotGatherer.h"

#include "hardware/SystemInfo.h"
#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryInfo.h"

#include <QDateTime>

namespace tallowmere {

namespace {

StatsSnapshot::CPU cpuSection(const CPUMonitoringService* service)
{
    if (!service)
        return {};
    const CPUMonitor& m = service->monitor();
    return {m.currentUsage(), m.userUsage(), m.systemUsage()};
}

StatsSnapshot::Memory memorySection(const MemoryMonitoringService* service)
{
    if (!service)
        return {};
    const MemoryMonitor& m = service->monitor();
    return {m.usagePercent(), m.usedGB(), m.freeGB(), m.totalGB(), m.activeGB(), m.wiredGB(), m.compressedGB()};
}

StatsSnapshot::Disk diskSection(const DiskMonitoringService* service)
{
    if (!service)
        return {};
    const DiskMonitor& m = service->monitor();
    return {m.usagePercent(), m.usedGB(), m.freeGB(), m.totalGB(), m.readBytesPerSec(), m.writeBytesPerSec()};
}

StatsSnapshot::Network networkSection(NetworkMonitoringService* service)
{
    if (!service)
        return {};
    const NetworkMonitor& m = service->monitor();
    return {m.downloadRate(), m.uploadRate(), m.sessionDownload(), m.sessionUpload(), m.unattributedBytes(),
            service->usageStore().unwrittenDeltas()};
}

} // namespace

SnapshotGatherer::SnapshotGatherer()
    : SnapshotGatherer([] { return BatteryInfo::current(); }, [] { return SystemInfo::current(); })
{
}

SnapshotGatherer::SnapshotGatherer(BatteryReader battery, SystemReader system)
    : readBattery_(std::move(battery)), readSystem_(std::move(system))
{
}

SnapshotGatherer::~SnapshotGatherer() = default;

void SnapshotGatherer::cacheSystem()
{
    if (!cachedSystem_)
        cachedSystem_ = systemSection(readSystem_());
}

StatsSnapshot SnapshotGatherer::makeSnapshot() const
{
    StatsSnapshot snapshot;
    snapshot.battery = batterySection(readBattery_());
    // Without a cached inventory this snapshot gathers one for itself only; one is kept
    // from the server's next start.
    snapshot.system = cachedSystem_ ? *cachedSystem_ : systemSection(readSystem_());
    snapshot.timestamp = snapshotTimestamp(QDateTime::currentSecsSinceEpoch());
    snapshot.cpu = cpuSection(services_.cpu.data());
    snapshot.memory = memorySection(services_.memory.data());
    snapshot.disk = diskSection(services_.disk.data());
    snapshot.network = networkSection(services_.network.data());
    return snapshot;
}

StatsSnapshot::Battery SnapshotGatherer::batterySection(const BatteryInfo& battery)
{
    StatsSnapshot::Battery section;
    section.isPresent = battery.isPresent;
    section.percentage = battery.percentage;
    section.isCharging = battery.isCharging;
    section.powerSource = battery.powerSource;
    section.maximumCapacityPercent = battery.maximumCapacityPercent();
    section.cycleCount = battery.cycleCount;
    section.healthStatus = battery.healthStatus();
    section.timeRemainingMinutes = battery.timeRemainingMinutes;
    return section;
}

StatsSnapshot::System SnapshotGatherer::systemSection(const SystemInfo& system)
{
    StatsSnapshot::System section;
    section.model = system.modelIdentifier ? system.modelIdentifier : system.machine;
    section.cpuBrand = system.cpuBrand;
    section.logicalCores = system.cpuCores;
    section.memoryGB = system.memoryGB;
    section.osVersion = system.osVersion;
    section.computerName = system.osComputerName;
    return section;
}

} // namespace tallowmere
