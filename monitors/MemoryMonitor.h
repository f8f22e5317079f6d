#pragma once

#include "monitors/MemoryParsers.h"
#include "monitors/MonitorCommon.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <string>

namespace tallowmere {

struct MemoryHistoryPoint {
    qint64 id = 0;
    double usage = 0;
    bool operator==(const MemoryHistoryPoint&) const = default;
};

struct ProcessMemoryUsage {
    QString id;  // the program name
    QString name;
    std::uint64_t memoryBytes = 0;
    double percent = 0;
    int processCount = 0;
    bool operator==(const ProcessMemoryUsage&) const = default;
};

enum class MemorySortField { memory, name };
// The label of the sort choice on the memory page.
QString sortLabel(MemorySortField field);

struct MemorySources {
    std::function<std::optional<MemoryCounters>()> readCounters;
    std::function<ProgramMemoryMap()> collectPrograms;  // runs on a worker thread
};
// Counters from <procRoot>/meminfo and <sysRoot>/block/zram*/mm_stat; programs from /bin/ps.
MemorySources linuxMemorySources(const std::string& procRoot = "/proc", const std::string& sysRoot = "/sys");

// Used memory once a second with a 60-point history, and resident memory per program every
// two seconds.
class MemoryMonitor : public QObject {
    Q_OBJECT
public:
    static constexpr int historyLimit = kHistoryLimit;
    static constexpr std::chrono::milliseconds samplePeriod{1000};
    static constexpr std::chrono::milliseconds perProcessPeriod{2000};

    explicit MemoryMonitor(MemorySources sources = linuxMemorySources(),
                           std::shared_ptr<Scheduler> scheduler = realScheduler(), QObject* parent = nullptr);

    double usagePercent() const { return usagePercent_; }
    double usedGB() const { return usedGB_; }
    double freeGB() const { return freeGB_; }
    double totalGB() const { return totalGB_; }
    double activeGB() const { return activeGB_; }
    double wiredGB() const { return wiredGB_; }
    double compressedGB() const { return compressedGB_; }
    const QList<MemoryHistoryPoint>& history() const { return history_; }
    const QList<ProcessMemoryUsage>& perProcess() const { return perProcess_; }

    void startMonitoring() { monitoringTask_.startIfEmpty(samplePeriod, [this] { sample(); }); }
    void stopMonitoring() { monitoringTask_.stop(); }
    const LoopTask* monitoringTask() const { return monitoringTask_.task(); }

    void startPerProcessMonitoring();
    void stopPerProcessMonitoring() { perProcessTask_.stop(); }
    const LoopTask* perProcessTask() const { return perProcessTask_.task(); }

    void sample();
    void applyPrograms(const ProgramMemoryMap& programs);

signals:
    void usagePercentChanged();
    void usedGBChanged();
    void freeGBChanged();
    void totalGBChanged();
    void activeGBChanged();
    void wiredGBChanged();
    void compressedGBChanged();
    void historyChanged();
    void perProcessChanged();

private:
    MemorySources sources_;
    double usagePercent_ = 0;
    double usedGB_ = 0;
    double freeGB_ = 0;
    double totalGB_ = 0;
    double activeGB_ = 0;
    double wiredGB_ = 0;
    double compressedGB_ = 0;
    QList<MemoryHistoryPoint> history_;
    QList<ProcessMemoryUsage> perProcess_;
    LoopSlot monitoringTask_;
    LoopSlot perProcessTask_;
};

} // namespace tallowmere
