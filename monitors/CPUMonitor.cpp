#include "monitors/CPUMonitor.h"

#include "core/Detached.h"
#include "core/Property.h"
#include "core/SmallFile.h"

namespace tallowmere {

QString sortLabel(ProcessSortField field)
{
    switch (field) {
    case ProcessSortField::cpu: return QStringLiteral("CPU usage");
    case ProcessSortField::memory: return QStringLiteral("Memory");
    case ProcessSortField::name: return QStringLiteral("Name");
    }
    return {};
}

CPUSources linuxCPUSources(const std::string& procRoot)
{
    return {
        [path = procRoot + "/stat"]() -> std::optional<CPUTicks> {
            std::string text;
            if (!readSmallFile(path, text))
                return std::nullopt;
            return parseCPUTicks(text);
        },
        [procRoot] { return collectProcessSnapshot(procRoot); },
    };
}

CPUMonitor::CPUMonitor(CPUSources sources, std::shared_ptr<Scheduler> scheduler, QObject* parent)
    : QObject(parent)
    , sources_(std::move(sources))
    , monitoringTask_(scheduler)
    , processTask_(scheduler)
{
}

void CPUMonitor::sample()
{
    const std::optional<CPUTicks> reading = sources_.readTicks();
    if (!reading)
        return;
    if (!previousTicks_) {
        previousTicks_ = reading;
        return;
    }
    const CPUTicks& now = *reading;
    const CPUTicks& before = *previousTicks_;
    // Unsigned 32-bit arithmetic wraps exactly like the counters do.
    const std::uint32_t total = now.user + now.system + now.idle + now.nice;
    const std::uint32_t previousTotal = before.user + before.system + before.idle + before.nice;
    if (total == previousTotal) {
        previousTicks_ = reading;
        return;
    }
    const double deltaTotal = static_cast<std::uint32_t>(total - previousTotal);
    const double deltaIdle = static_cast<std::uint32_t>(now.idle - before.idle);
    const double deltaUser = static_cast<std::uint32_t>(now.user - before.user);
    const double deltaSystem = static_cast<std::uint32_t>(now.system - before.system);

    const double usage = clampPercent(100.0 * (1.0 - deltaIdle / deltaTotal));
    assignProperty(this, currentUsage_, usage, &CPUMonitor::currentUsageChanged);
    assignProperty(this, userUsage_, clampPercent(100.0 * deltaUser / deltaTotal), &CPUMonitor::userUsageChanged);
    assignProperty(this, systemUsage_, clampPercent(100.0 * deltaSystem / deltaTotal), &CPUMonitor::systemUsageChanged);
    replaceProperty(this, history_, appendedHistory(history_, usage), &CPUMonitor::historyChanged);
    previousTicks_ = reading;
}

void CPUMonitor::startProcessMonitoring()
{
    processTask_.startAsyncIfEmpty(processPeriod, [this](LoopTask::Done done) {
        // A walk that finishes after the page closed must not leave a baseline behind, or the
        // reopened page would show rows after a single cycle.
        const quint64 round = processRound_;
        runDetached(this, sources_.collectProcesses, [this, round, done](ProcessSnapshot snapshot) {
            if (round != processRound_)
                return;
            applySnapshot(snapshot);
            done();
        });
    });
}

void CPUMonitor::stopProcessMonitoring()
{
    processTask_.stop();
    ++processRound_;
    previousProcCPU_.clear();
    previousProcTime_.reset();
    replaceProperty(this, processes_, QList<ProcessCPUUsage>{}, &CPUMonitor::processesChanged);
}

void CPUMonitor::setBaseline(const ProcessSnapshot& snapshot)
{
    previousProcCPU_ = snapshot.cpuTime;
    previousProcTime_ = snapshot.time;
}

void CPUMonitor::applySnapshot(const ProcessSnapshot& snapshot)
{
    if (!previousProcTime_) {
        setBaseline(snapshot);
        return;
    }
    const double elapsed = secondsBetween(*previousProcTime_, snapshot.time);
    if (!(elapsed > 0.1)) {
        setBaseline(snapshot);
        return;
    }
    QList<ProcessCPUUsage> rows;
    rows.reserve(static_cast<qsizetype>(snapshot.cpuTime.size()));
    for (const auto& [pid, cpuTime] : snapshot.cpuTime) {
        const auto previous = previousProcCPU_.find(pid);
        if (previous == previousProcCPU_.end())
            continue;
        const std::uint64_t delta = cpuTime >= previous->second ? cpuTime - previous->second : 0;
        const auto name = snapshot.names.find(pid);
        const auto memory = snapshot.memory.find(pid);
        rows.append(ProcessCPUUsage{
            pid,
            pid,
            name != snapshot.names.end() ? name->second : QStringLiteral("PID %1").arg(pid),
            static_cast<double>(delta) / 1e9 / elapsed * 100.0,
            memory != snapshot.memory.end() ? memory->second : 0,
        });
    }
    replaceProperty(this, processes_, std::move(rows), &CPUMonitor::processesChanged);
    setBaseline(snapshot);
}

} // namespace tallowmere
