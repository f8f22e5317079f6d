#include "monitors/MemoryMonitor.h"

#include "core/ChildProcess.h"
#include "core/Detached.h"
#include "core/Property.h"
#include "core/SmallFile.h"
#include "monitors/ZramDevices.h"

#include <memory>

namespace tallowmere {

QString sortLabel(MemorySortField field)
{
    return field == MemorySortField::memory ? QStringLiteral("Memory") : QStringLiteral("Name");
}

MemorySources linuxMemorySources(const std::string& procRoot, const std::string& sysRoot)
{
    return {
        [path = procRoot + "/meminfo", zram = std::make_shared<ZramDevices>(sysRoot), text = std::string()]() mutable
        -> std::optional<MemoryCounters> {
            const std::uint64_t zramBytes = zram->memUsed();
            if (!readSmallFile(path, text))
                return std::nullopt;
            return parseMemInfo(text, zramBytes);
        },
        [] {
            const ChildResult ps = runChild(QStringLiteral("/bin/ps"), {QStringLiteral("-axo"), QStringLiteral("rss=,comm=")});
            return ps.started ? parsePsOutput(ps.output) : ProgramMemoryMap{};
        },
    };
}

MemoryMonitor::MemoryMonitor(MemorySources sources, std::shared_ptr<Scheduler> scheduler, QObject* parent)
    : QObject(parent)
    , sources_(std::move(sources))
    , monitoringTask_(scheduler)
    , perProcessTask_(scheduler)
{
}

void MemoryMonitor::sample()
{
    const auto counters = sources_.readCounters();
    if (!counters)
        return;
    const std::uint64_t used = counters->active + counters->wired + counters->compressed;
    const double usage = counters->installed == 0
        ? (used > 0 ? 100.0 : 0.0)
        : clampPercent(static_cast<double>(used) / static_cast<double>(counters->installed) * 100.0);
    const std::uint64_t free = counters->installed > used ? counters->installed - used : 0;

    assignProperty(this, usagePercent_, usage, &MemoryMonitor::usagePercentChanged);
    assignProperty(this, usedGB_, toGB(used), &MemoryMonitor::usedGBChanged);
    assignProperty(this, freeGB_, toGB(free), &MemoryMonitor::freeGBChanged);
    assignProperty(this, totalGB_, toGB(counters->installed), &MemoryMonitor::totalGBChanged);
    assignProperty(this, activeGB_, toGB(counters->active), &MemoryMonitor::activeGBChanged);
    assignProperty(this, wiredGB_, toGB(counters->wired), &MemoryMonitor::wiredGBChanged);
    assignProperty(this, compressedGB_, toGB(counters->compressed), &MemoryMonitor::compressedGBChanged);
    replaceProperty(this, history_, appendedHistory(history_, usage), &MemoryMonitor::historyChanged);
}

void MemoryMonitor::startPerProcessMonitoring()
{
    perProcessTask_.startAsyncIfEmpty(perProcessPeriod, [this](LoopTask::Done done) {
        runDetached(this, sources_.collectPrograms, [this, done](ProgramMemoryMap programs) {
            applyPrograms(programs);
            done();
        });
    });
}

void MemoryMonitor::applyPrograms(const ProgramMemoryMap& programs)
{
    if (programs.empty())
        return;
    // The installed size is read again now, not taken from the last sample.
    const auto counters = sources_.readCounters();
    const std::uint64_t installed = counters ? counters->installed : 0;
    QList<ProcessMemoryUsage> rows;
    rows.reserve(static_cast<qsizetype>(programs.size()));
    for (const auto& [name, program] : programs) {
        const double percent = installed == 0
            ? 0.0
            : static_cast<double>(program.bytes) / static_cast<double>(installed) * 100.0;
        rows.append(ProcessMemoryUsage{name, name, program.bytes, percent, program.processCount});
    }
    replaceProperty(this, perProcess_, std::move(rows), &MemoryMonitor::perProcessChanged);
}

} // namespace tallowmere
