#include "power/BatteryRules.h"

#include <QMetaType>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tallowmere::battery {

namespace {

bool isNumberType(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

int clampedToInt(double value)
{
    constexpr double low = std::numeric_limits<int>::min();
    constexpr double high = std::numeric_limits<int>::max();
    return static_cast<int>(std::trunc(std::clamp(value, low, high)));
}

// First key of `keys` whose value is a number.
std::optional<int> firstNumber(const QVariantMap& map, std::initializer_list<const char*> keys)
{
    for (const char* key : keys) {
        if (auto n = numberValue(map.value(QLatin1StringView(key))))
            return n;
    }
    return std::nullopt;
}

std::optional<QString> firstText(const QVariantMap& map, std::initializer_list<const char*> keys)
{
    for (const char* key : keys) {
        if (auto t = textValue(map.value(QLatin1StringView(key))))
            return t;
    }
    return std::nullopt;
}

template <class T>
std::optional<T> orElse(std::optional<T> first, const std::optional<T>& second)
{
    return first ? first : second;
}

std::optional<int> cycleCountOf(const QVariantMap& properties)
{
    if (auto n = numberValue(properties.value(QStringLiteral("CycleCount"))))
        return n;
    const QVariant data = properties.value(QStringLiteral("BatteryData"));
    if (data.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return numberValue(data.toMap().value(QStringLiteral("CycleCount")));
}

} // namespace

std::optional<int> numberValue(const QVariant& value)
{
    if (!isNumberType(value))
        return std::nullopt;
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float) {
        const double d = value.toDouble();
        if (!std::isfinite(d))
            return std::nullopt;
        return clampedToInt(d);
    }
    if (value.typeId() == QMetaType::ULongLong || value.typeId() == QMetaType::ULong) {
        const qulonglong u = value.toULongLong();
        return u > static_cast<qulonglong>(std::numeric_limits<int>::max()) ? std::numeric_limits<int>::max()
                                                                             : static_cast<int>(u);
    }
    const qlonglong n = value.toLongLong();
    return static_cast<int>(std::clamp<qlonglong>(n, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::optional<bool> flagValue(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (!isNumberType(value))
        return std::nullopt;
    return value.toDouble() != 0.0;
}

std::optional<QString> textValue(const QVariant& value)
{
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

std::optional<RegistryBatteryHealth> registryFromProperties(const std::optional<QVariantMap>& properties)
{
    if (!properties)
        return std::nullopt;
    const QVariantMap& p = *properties;
    RegistryBatteryHealth r;
    r.isInstalled = flagValue(p.value(QStringLiteral("BatteryInstalled"))).value_or(false);
    r.percentage = firstNumber(p, {"CurrentCapacity"});
    r.isCharging = flagValue(p.value(QStringLiteral("IsCharging")));
    r.isFullyCharged = flagValue(p.value(QStringLiteral("FullyCharged")));
    r.externalConnected = flagValue(p.value(QStringLiteral("ExternalConnected")));
    r.cycleCount = cycleCountOf(p);
    r.designCapacity = firstNumber(p, {"DesignCapacity"});
    r.maxCapacity = firstNumber(p, {"NominalChargeCapacity", "AppleRawMaxCapacity"});
    r.currentCapacity = firstNumber(p, {"AppleRawCurrentCapacity"});
    r.condition = firstText(p, {"BatteryHealth", "Condition"});
    r.amperage = firstNumber(p, {"Amperage", "InstantAmperage"});
    r.voltage = firstNumber(p, {"Voltage", "AppleRawBatteryVoltage"});
    return r;
}

std::optional<BatteryInfo> registryAlone(const std::optional<RegistryBatteryHealth>& registry)
{
    if (!registry || !registry->isInstalled)
        return std::nullopt;
    BatteryInfo info;
    info.isPresent = true;
    info.powerSource = registry->externalConnected.value_or(false) ? QStringLiteral("AC Power")
                                                                   : QStringLiteral("Battery Power");
    info.percentage = registry->percentage;
    info.isCharging = registry->isCharging;
    info.isFullyCharged = registry->isFullyCharged;
    info.cycleCount = registry->cycleCount;
    info.designCapacity = registry->designCapacity;
    info.maxCapacity = registry->maxCapacity;
    info.currentCapacity = registry->currentCapacity;
    info.amperage = registry->amperage;
    info.voltage = registry->voltage;
    info.health = registry->condition;
    return info;
}

bool isInternalBattery(const QVariantMap& description)
{
    const QString transport = textValue(description.value(QStringLiteral("Transport Type"))).value_or(QString());
    if (transport == QLatin1StringView("Internal") || transport == QLatin1StringView("InternalBattery"))
        return true;
    return textValue(description.value(QStringLiteral("Type"))) == QStringLiteral("InternalBattery");
}

bool isPresentSource(const QVariantMap& description)
{
    return flagValue(description.value(QStringLiteral("Is Present"))).value_or(true);
}

BatteryInfo mergeDescription(const QVariantMap& d, const std::optional<RegistryBatteryHealth>& registry)
{
    const RegistryBatteryHealth r = registry.value_or(RegistryBatteryHealth{});
    BatteryInfo info;
    info.isPresent = true;
    info.percentage = orElse(numberValue(d.value(QStringLiteral("Current Capacity"))), r.percentage);
    info.isCharging = orElse(flagValue(d.value(QStringLiteral("Is Charging"))), r.isCharging);
    info.isFullyCharged = orElse(flagValue(d.value(QStringLiteral("Is Finishing Charge"))), r.isFullyCharged);
    info.powerSource = textValue(d.value(QStringLiteral("Power Source State")));
    info.timeRemainingMinutes = numberValue(d.value(QStringLiteral("Time to Empty")));
    info.timeToFullChargeMinutes = numberValue(d.value(QStringLiteral("Time to Full Charge")));

    std::optional<QString> health = textValue(d.value(QStringLiteral("BatteryHealthCondition")));
    if (!health || health->isEmpty())
        health = textValue(d.value(QStringLiteral("BatteryHealth")));
    info.health = orElse(health, r.condition);

    info.cycleCount = r.cycleCount;
    info.designCapacity = r.designCapacity;
    info.maxCapacity = r.maxCapacity;
    info.currentCapacity = r.currentCapacity;
    info.amperage = orElse(numberValue(d.value(QStringLiteral("Current"))), r.amperage);
    info.voltage = orElse(numberValue(d.value(QStringLiteral("Voltage"))), r.voltage);
    return info;
}

BatteryInfo combine(const std::optional<QList<QVariantMap>>& descriptions,
                    const std::optional<RegistryBatteryHealth>& registry)
{
    if (!descriptions)
        return registryAlone(registry).value_or(BatteryInfo::noBattery());

    std::optional<QString> lastState;
    for (const QVariantMap& description : *descriptions) {
        if (!description.isEmpty()) {
            if (auto state = textValue(description.value(QStringLiteral("Power Source State"))))
                lastState = state;
        }
        if (!isInternalBattery(description) || !isPresentSource(description))
            continue;
        return mergeDescription(description, registry);
    }
    if (auto alone = registryAlone(registry))
        return *alone;
    if (lastState == QStringLiteral("AC Power"))
        return BatteryInfo::noBattery(lastState);
    return BatteryInfo::noBattery();
}

} // namespace tallowmere::battery
