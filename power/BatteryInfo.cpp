#include "power/BatteryInfo.h"

#include "power/BatteryRules.h"
#include "power/BatterySysfsReader.h"
#include "power/BatteryUPowerReader.h"

#include <algorithm>
#include <cmath>

namespace tallowmere {

namespace {

// Full-charge capacity over design capacity in percent, rounded half away from zero.
std::optional<long long> capacityRatioPercent(const BatteryInfo& info)
{
    if (!info.designCapacity || !info.maxCapacity || *info.designCapacity < 1)
        return std::nullopt;
    return std::llround(double(*info.maxCapacity) / double(*info.designCapacity) * 100.0);
}

std::optional<QString> durationText(const std::optional<int>& minutes)
{
    if (!minutes || *minutes < 1)
        return std::nullopt;
    const int m = *minutes;
    if (m < 60)
        return QStringLiteral("%1m").arg(m);
    return QStringLiteral("%1h %2m").arg(m / 60).arg(m % 60);
}

QString normalisedHealth(const QString& health)
{
    const QString lower = health.toLower();
    if (lower == QLatin1StringView("good") || lower == QLatin1StringView("normal"))
        return QStringLiteral("Normal");
    if (lower == QLatin1StringView("fair"))
        return QStringLiteral("Fair");
    if (lower == QLatin1StringView("poor"))
        return QStringLiteral("Service Recommended");
    return health;
}

} // namespace

BatteryInfo BatteryInfo::current()
{
    return current(QDBusConnection::systemBus(), QStringLiteral("/sys"));
}

BatteryInfo BatteryInfo::current(const QDBusConnection& systemBus, const QString& sysfsRoot)
{
    const auto registry = battery::registryFromProperties(battery::readBatteryRegistry(sysfsRoot));
    return battery::combine(battery::readPowerSourceDescriptions(systemBus), registry);
}

BatteryInfo BatteryInfo::noBattery(std::optional<QString> powerSource)
{
    BatteryInfo info;
    info.powerSource = std::move(powerSource);
    return info;
}

std::optional<int> BatteryInfo::maximumCapacityPercent() const
{
    const auto ratio = capacityRatioPercent(*this);
    if (!ratio)
        return std::nullopt;
    return static_cast<int>(std::clamp<long long>(*ratio, 0, 100));
}

QString BatteryInfo::healthStatus() const
{
    if (health == QStringLiteral("Permanent Battery Failure"))
        return *health;
    if (const auto ratio = capacityRatioPercent(*this)) {
        if (*ratio >= 80)
            return QStringLiteral("Normal");
        if (*ratio >= 60)
            return QStringLiteral("Fair");
        return QStringLiteral("Service Recommended");
    }
    if (!health || health->isEmpty())
        return QStringLiteral("Unknown");
    const QString status = normalisedHealth(*health);
    return status == QLatin1StringView("Check Battery") ? QStringLiteral("Unknown") : status;
}

BatteryHealthColor BatteryInfo::healthColor() const
{
    const QString status = healthStatus();
    if (status == QLatin1StringView("Normal") || status == QLatin1StringView("Good"))
        return BatteryHealthColor::green;
    if (status == QLatin1StringView("Fair"))
        return BatteryHealthColor::orange;
    if (status == QLatin1StringView("Service Recommended") || status == QLatin1StringView("Poor")
        || status == QLatin1StringView("Permanent Battery Failure"))
        return BatteryHealthColor::red;
    return BatteryHealthColor::secondary;
}

std::optional<QString> BatteryInfo::timeRemainingText() const
{
    return durationText(timeRemainingMinutes);
}

std::optional<QString> BatteryInfo::timeToFullText() const
{
    return durationText(timeToFullChargeMinutes);
}

std::optional<QString> BatteryInfo::menuBarTimeText() const
{
    const std::optional<int>& minutes = isCharging.value_or(false) ? timeToFullChargeMinutes : timeRemainingMinutes;
    if (!minutes || *minutes < 1)
        return std::nullopt;
    return QString::asprintf("%d:%02d", *minutes / 60, *minutes % 60);
}

QString BatteryInfo::statusLine() const
{
    if (isCharging.value_or(false)) {
        if (const auto full = timeToFullText())
            return QStringLiteral("Charging \u00B7 Full in ") + *full;
        return QStringLiteral("Charging");
    }
    if (isFullyCharged.value_or(false))
        return QStringLiteral("Fully Charged");
    if (const auto remaining = timeRemainingText())
        return QStringLiteral("On Battery \u00B7 ") + *remaining + QStringLiteral(" remaining");
    return powerSource.value_or(QStringLiteral("On Battery"));
}

} // namespace tallowmere
