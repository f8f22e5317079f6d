#include "server/StatsSnapshot.h"

#include "server/JSONText.h"

#include <QDateTime>

#include <nlohmann/json.hpp>

namespace tallowmere {

namespace {

template <class T>
void putOptional(nlohmann::json& object, const char* key, const std::optional<T>& value)
{
    if (value)
        object[key] = *value;
}

void putOptional(nlohmann::json& object, const char* key, const std::optional<QString>& value)
{
    if (value)
        object[key] = value->toStdString();
}

} // namespace

nlohmann::json toJSON(const StatsSnapshot::CPU& cpu)
{
    return {{"usagePercent", cpu.usagePercent},
            {"userPercent", cpu.userPercent},
            {"systemPercent", cpu.systemPercent}};
}

nlohmann::json toJSON(const StatsSnapshot::Memory& memory)
{
    return {{"usagePercent", memory.usagePercent}, {"usedGB", memory.usedGB},
            {"freeGB", memory.freeGB},             {"totalGB", memory.totalGB},
            {"activeGB", memory.activeGB},         {"wiredGB", memory.wiredGB},
            {"compressedGB", memory.compressedGB}};
}

nlohmann::json toJSON(const StatsSnapshot::Disk& disk)
{
    return {{"usagePercent", disk.usagePercent},       {"usedGB", disk.usedGB},
            {"freeGB", disk.freeGB},                   {"totalGB", disk.totalGB},
            {"readBytesPerSec", disk.readBytesPerSec}, {"writeBytesPerSec", disk.writeBytesPerSec}};
}

nlohmann::json toJSON(const StatsSnapshot::Network& network)
{
    return {{"downloadBytesPerSec", network.downloadBytesPerSec},
            {"uploadBytesPerSec", network.uploadBytesPerSec},
            {"sessionDownloadBytes", network.sessionDownloadBytes},
            {"sessionUploadBytes", network.sessionUploadBytes}};
}

nlohmann::json toJSON(const StatsSnapshot::Battery& battery)
{
    nlohmann::json object = {{"isPresent", battery.isPresent},
                             {"healthStatus", battery.healthStatus.toStdString()}};
    putOptional(object, "percentage", battery.percentage);
    putOptional(object, "isCharging", battery.isCharging);
    putOptional(object, "powerSource", battery.powerSource);
    putOptional(object, "maximumCapacityPercent", battery.maximumCapacityPercent);
    putOptional(object, "cycleCount", battery.cycleCount);
    putOptional(object, "timeRemainingMinutes", battery.timeRemainingMinutes);
    return object;
}

nlohmann::json toJSON(const StatsSnapshot::System& system)
{
    nlohmann::json object = {{"logicalCores", system.logicalCores},
                             {"memoryGB", system.memoryGB},
                             {"osVersion", system.osVersion.toStdString()}};
    putOptional(object, "model", system.model);
    putOptional(object, "cpuBrand", system.cpuBrand);
    putOptional(object, "computerName", system.computerName);
    return object;
}

nlohmann::json toJSON(const StatsSnapshot& snapshot)
{
    return {{"timestamp", snapshot.timestamp.toStdString()},
            {"cpu", toJSON(snapshot.cpu)},
            {"memory", toJSON(snapshot.memory)},
            {"disk", toJSON(snapshot.disk)},
            {"network", toJSON(snapshot.network)},
            {"battery", toJSON(snapshot.battery)},
            {"system", toJSON(snapshot.system)}};
}

template <class Section>
QByteArray encodeJSON(const Section& value)
{
    return prettyJSONOrEmpty(toJSON(value));
}

template QByteArray encodeJSON(const StatsSnapshot&);
template QByteArray encodeJSON(const StatsSnapshot::CPU&);
template QByteArray encodeJSON(const StatsSnapshot::Memory&);
template QByteArray encodeJSON(const StatsSnapshot::Disk&);
template QByteArray encodeJSON(const StatsSnapshot::Network&);
template QByteArray encodeJSON(const StatsSnapshot::Battery&);
template QByteArray encodeJSON(const StatsSnapshot::System&);

QString snapshotTimestamp(std::int64_t secondsSinceEpoch)
{
    return QDateTime::fromSecsSinceEpoch(secondsSinceEpoch, Qt::UTC).toString(Qt::ISODate);
}

} // namespace tallowmere
