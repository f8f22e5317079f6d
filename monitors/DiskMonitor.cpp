#include "monitors/DiskMonitor.h"

#include "core/Property.h"
#include "core/SmallFile.h"

#include <algorithm>

namespace tallowmere {

DiskSources linuxDiskSources(const std::string& procRoot, const std::string& sysRoot)
{
    return {
        [] { return readVolumeCapacity("/"); },
        [path = procRoot + "/diskstats", sysRoot, text = std::string(), disks = std::set<std::string>(),
         deviceCount = std::ptrdiff_t(-1)]() mutable -> std::optional<DiskCounters> {
            if (!readSmallFile(path, text))
                return std::nullopt;
            // Disks come and go while the program runs; every one adds or removes a line, so
            // the sysfs lookup is repeated only when the number of lines changes.
            const std::ptrdiff_t lines = std::count(text.begin(), text.end(), '\n');
            if (lines != deviceCount) {
                disks = physicalDiskNames(sysRoot);
                deviceCount = lines;
            }
            return parseDiskStats(text, disks);
        },
        systemNow,
    };
}

DiskMonitor::DiskMonitor(DiskSources sources, std::shared_ptr<Scheduler> scheduler, QObject* parent)
    : QObject(parent)
    , sources_(std::move(sources))
    , monitoringTask_(scheduler)
{
}

void DiskMonitor::sample()
{
    updateCapacity();
    updateThroughput();
}

void DiskMonitor::updateCapacity()
{
    const auto volume = sources_.readCapacity();
    if (!volume || volume->capacity == 0)
        return;
    const std::uint64_t used = volume->capacity > volume->free ? volume->capacity - volume->free : 0;
    const double usage = clampPercent(static_cast<double>(used) / static_cast<double>(volume->capacity) * 100.0);
    assignProperty(this, usagePercent_, usage, &DiskMonitor::usagePercentChanged);
    assignProperty(this, usedGB_, toGB(used), &DiskMonitor::usedGBChanged);
    assignProperty(this, freeGB_, toGB(volume->free), &DiskMonitor::freeGBChanged);
    assignProperty(this, totalGB_, toGB(volume->capacity), &DiskMonitor::totalGBChanged);
}

void DiskMonitor::updateThroughput()
{
    const auto reading = sources_.readCounters();
    if (!reading)
        return;
    const auto now = sources_.now();
    if (!previousCounters_ || !previousSampleTime_) {
        previousCounters_ = reading;
        previousSampleTime_ = now;
        return;
    }
    const double elapsed = secondsBetween(*previousSampleTime_, now);
    if (!(elapsed > 0)) {
        previousCounters_ = reading;
        previousSampleTime_ = now;
        return;
    }
    const auto delta = [](std::uint64_t current, std::uint64_t previous) {
        return static_cast<double>(current >= previous ? current - previous : 0);
    };
    const double readRate = delta(reading->read, previousCounters_->read) / elapsed;
    const double writeRate = delta(reading->write, previousCounters_->write) / elapsed;
    assignProperty(this, readBytesPerSec_, readRate, &DiskMonitor::readBytesPerSecChanged);
    assignProperty(this, writeBytesPerSec_, writeRate, &DiskMonitor::writeBytesPerSecChanged);
    replaceProperty(this, history_, appendedHistory(history_, readRate, writeRate), &DiskMonitor::historyChanged);
    previousCounters_ = reading;
    previousSampleTime_ = now;
}

} // namespace tallowmere
