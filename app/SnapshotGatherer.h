#pragma once

#include "server/StatsSnapshot.h"

#include <QPointer>

#include <functional>
#include <optional>

namespace tallowmere {

class CPUMonitoringService;
class MemoryMonitoringService;
class DiskMonitoringService;
class NetworkMonitoringService;
struct BatteryInfo;
struct SystemInfo;

// The services a snapshot copies its live figures from. Weak: a service that has gone away
// gives zeros for its section.
struct SnapshotServices {
    QPointer<CPUMonitoringService> cpu;
    QPointer<MemoryMonitoringService> memory;
    QPointer<DiskMonitoringService> disk;
    QPointer<NetworkMonitoringService> network;
};

// Builds the server's snapshots from the live services (main thread). The monitors' published
// values are copied as they stand (nothing is sampled), the battery is read afresh every time,
// and the facts about the machine come from one gathering that is kept once cacheSystem() ran
// (the container does that when it first starts the server).
class SnapshotGatherer {
public:
    using BatteryReader = std::function<BatteryInfo()>;
    using SystemReader = std::function<SystemInfo()>;

    // The readers default to the machine's own (UPower and sysfs; /proc, /sys and /etc).
    SnapshotGatherer();
    SnapshotGatherer(BatteryReader battery, SystemReader system);
    ~SnapshotGatherer();

    void setServices(SnapshotServices services) { services_ = std::move(services); }
    const SnapshotServices& services() const { return services_; }

    // Gathers the machine's facts unless that happened already.
    void cacheSystem();
    bool hasCachedSystem() const { return cachedSystem_.has_value(); }

    StatsSnapshot makeSnapshot() const;

    static StatsSnapshot::Battery batterySection(const BatteryInfo& battery);
    static StatsSnapshot::System systemSection(const SystemInfo& system);

private:
    BatteryReader readBattery_;
    SystemReader readSystem_;
    SnapshotServices services_;
    std::optional<StatsSnapshot::System> cachedSystem_;
};

} // namespace tallowmere
