#pragma once

#include "monitors/DiskParsers.h"
#include "monitors/MonitorCommon.h"

#include <QList>
#include <QObject>

#include <functional>
#include <optional>
#include <string>

namespace tallowmere {

struct DiskIOHistoryPoint {
    qint64 id = 0;
    double readBytesPerSec = 0;
    double writeBytesPerSec = 0;
    bool operator==(const DiskIOHistoryPoint&) const = default;
};

struct DiskSources {
    std::function<std::optional<VolumeCapacity>()> readCapacity;
    std::function<std::optional<DiskCounters>()> readCounters;
    WallClock now = systemNow;
};
// Capacity of "/" and the byte totals of the physical disks under <sysRoot>/block, read from
// <procRoot>/diskstats.
DiskSources linuxDiskSources(const std::string& procRoot = "/proc", const std::string& sysRoot = "/sys");

// Capacity of the root volume and read/write throughput of all disks, once a second.
class DiskMonitor : public QObject {
    Q_OBJECT
public:
    static constexpr int historyLimit = kHistoryLimit;
    static constexpr std::chrono::milliseconds samplePeriod{1000};

    explicit DiskMonitor(DiskSources sources = linuxDiskSources(),
                         std::shared_ptr<Scheduler> scheduler = realScheduler(), QObject* parent = nullptr);

    double usagePercent() const { return usagePercent_; }
    double usedGB() const { return usedGB_; }
    double freeGB() const { return freeGB_; }
    double totalGB() const { return totalGB_; }
    double readBytesPerSec() const { return readBytesPerSec_; }
    double writeBytesPerSec() const { return writeBytesPerSec_; }
    const QList<DiskIOHistoryPoint>& history() const { return history_; }

    void startMonitoring() { monitoringTask_.startIfEmpty(samplePeriod, [this] { sample(); }); }
    void stopMonitoring() { monitoringTask_.stop(); }
    const LoopTask* monitoringTask() const { return monitoringTask_.task(); }

    // One cycle: capacity first, then throughput.
    void sample();

signals:
    void usagePercentChanged();
    void usedGBChanged();
    void freeGBChanged();
    void totalGBChanged();
    void readBytesPerSecChanged();
    void writeBytesPerSecChanged();
    void historyChanged();

private:
    void updateCapacity();
    void updateThroughput();

    DiskSources sources_;
    double usagePercent_ = 0;
    double usedGB_ = 0;
    double freeGB_ = 0;
    double totalGB_ = 0;
    double readBytesPerSec_ = 0;
    double writeBytesPerSec_ = 0;
    QList<DiskIOHistoryPoint> history_;
    std::optional<DiskCounters> previousCounters_;
    std::optional<std::chrono::system_clock::time_point> previousSampleTime_;
    LoopSlot monitoringTask_;
};

} // namespace tallowmere
