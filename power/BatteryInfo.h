#pragma once

#include <QDBusConnection>
#include <QList>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace tallowmere {

// The colour a health classification is shown in; `secondary` is the muted text colour.
enum class BatteryHealthColor { green, orange, red, secondary };

// What the battery driver's own entry says (under /sys/class/power_supply), already turned
// into milli-units. Absent as a whole when the machine has no battery entry.
struct RegistryBatteryHealth {
    bool isInstalled = false;
    std::optional<int> percentage;
    std::optional<bool> isCharging;
    std::optional<bool> isFullyCharged;
    std::optional<bool> externalConnected;
    std::optional<int> cycleCount;
    std::optional<int> designCapacity;
    std::optional<int> maxCapacity;
    std::optional<int> currentCapacity;
    std::optional<QString> condition;
    std::optional<int> amperage;
    std::optional<int> voltage;

    bool operator==(const RegistryBatteryHealth&) const = default;
};

// One immutable reading of the internal battery. Capacities in mAh, current in mA (negative
// while discharging), voltage in mV, times in minutes (below 1: no estimate yet).
struct BatteryInfo {
    bool isPresent = false;
    std::optional<int> percentage;
    std::optional<bool> isCharging;
    std::optional<bool> isFullyCharged;
    std::optional<QString> powerSource;
    std::optional<int> timeRemainingMinutes;
    std::optional<int> timeToFullChargeMinutes;
    std::optional<QString> health;
    std::optional<int> cycleCount;
    std::optional<int> designCapacity;
    std::optional<int> maxCapacity;
    std::optional<int> currentCapacity;
    std::optional<int> amperage;
    std::optional<int> voltage;

    bool operator==(const BatteryInfo&) const = default;

    // A fresh reading from UPower on the system bus and the kernel's power-supply entries.
    // Never fails: without a battery (or without UPower and sysfs) it is the "no battery" value.
    static BatteryInfo current();
    // The same from a given bus and sysfs root, so tests can point it elsewhere.
    static BatteryInfo current(const QDBusConnection& systemBus, const QString& sysfsRoot);

    // isPresent false, every other field absent except the power source when given.
    static BatteryInfo noBattery(std::optional<QString> powerSource = std::nullopt);

    // Full-charge capacity as a percentage of the design capacity, clamped to 0...100.
    std::optional<int> maximumCapacityPercent() const;
    // "Normal", "Fair", "Service Recommended", "Permanent Battery Failure", "Unknown" or the
    // driver's own condition text.
    QString healthStatus() const;
    BatteryHealthColor healthColor() const;
    // "45m" / "2h 5m"; absent without an estimate.
    std::optional<QString> timeRemainingText() const;
    std::optional<QString> timeToFullText() const;
    // "1:07": time to full while charging, else time to empty.
    std::optional<QString> menuBarTimeText() const;
    // The one-line state, e.g. "Charging · Full in 1h 5m" or "On Battery · 45m remaining".
    QString statusLine() const;
};

} // namespace tallowmere
