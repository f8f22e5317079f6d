#pragma once

#include "monitors/CPUParsers.h"
#include "monitors/MonitorCommon.h"
#include "monitors/ProcessSnapshot.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <string>

namespace tallowmere {

struct CPUHistoryPoint {
    qint64 id = 0;
    double usage = 0;
    bool operator==(const CPUHistoryPoint&) const = default;
};

struct ProcessCPUUsage {
    std::int32_t id = 0;
    std::int32_t pid = 0;
    QString name;
    double cpuPercent = 0;       // of one processor; above 100 for busy multi-threaded processes
    std::uint64_t memoryBytes = 0;
    bool operator==(const ProcessCPUUsage&) const = default;
};

enum class ProcessSortField { cpu, memory, name };
// The label of the sort choice on the CPU page.
QString sortLabel(ProcessSortField field);

// Where the monitor's readings come from; tests hand in their own.
struct CPUSources {
    std::function<std::optional<CPUTicks>()> readTicks;
    std::function<ProcessSnapshot()> collectProcesses;  // runs on a worker thread
};
CPUSources linuxCPUSources(const std::string& procRoot = "/proc");

// Total, user and system load once a second from the tick counters, a 60-point history, and
// per-process shares every two seconds while the CPU page asks for them.
class CPUMonitor : public QObject {
    Q_OBJECT
public:
    static constexpr int historyLimit = kHistoryLimit;
    static constexpr std::chrono::milliseconds samplePeriod{1000};
    static constexpr std::chrono::milliseconds processPeriod{2000};

    explicit CPUMonitor(CPUSources sources = linuxCPUSources(),
                        std::shared_ptr<Scheduler> scheduler = realScheduler(), QObject* parent = nullptr);

    double currentUsage() const { return currentUsage_; }
    double userUsage() const { return userUsage_; }
    double systemUsage() const { return systemUsage_; }
    const QList<CPUHistoryPoint>& history() const { return history_; }
    const QList<ProcessCPUUsage>& processes() const { return processes_; }

    // The main loop, switched by the monitoring service.
    void startMonitoring() { monitoringTask_.startIfEmpty(samplePeriod, [this] { sample(); }); }
    void stopMonitoring() { monitoringTask_.stop(); }
    const LoopTask* monitoringTask() const { return monitoringTask_.task(); }

    // The per-process loop, switched by the CPU page.
    void startProcessMonitoring();
    void stopProcessMonitoring();
    const LoopTask* processTask() const { return processTask_.task(); }

    // One round of each loop; the loops call these.
    void sample();
    void applySnapshot(const ProcessSnapshot& snapshot);

signals:
    void currentUsageChanged();
    void userUsageChanged();
    void systemUsageChanged();
    void historyChanged();
    void processesChanged();

private:
    void setBaseline(const ProcessSnapshot& snapshot);

    CPUSources sources_;
    double currentUsage_ = 0;
    double userUsage_ = 0;
    double systemUsage_ = 0;
    QList<CPUHistoryPoint> history_;
    QList<ProcessCPUUsage> processes_;
    std::optional<CPUTicks> previousTicks_;
    LoopSlot monitoringTask_;
    LoopSlot processTask_;
    quint64 processRound_ = 0;  // bumped on stop so late walks are dropped
    std::unordered_map<std::int32_t, std::uint64_t> previousProcCPU_;
    std::optional<std::chrono::system_clock::time_point> previousProcTime_;
};

} // namespace tallowmere
