#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVariantMap>

#include <optional>

// The kernel's power-supply class (/sys/class/power_supply) read as the battery driver's entry.
namespace tallowmere::battery {

// The KEY=VALUE lines of a power-supply uevent file, keys without their POWER_SUPPLY_ prefix.
QHash<QString, QString> parseUevent(const QByteArray& text);

// One battery supply's attributes as driver-entry properties ("BatteryInstalled",
// "CurrentCapacity", "DesignCapacity", ...) in mAh, mA and mV. `externalConnected` is whether
// a mains or USB supply is online, when the machine has such an entry.
QVariantMap registryPropertiesFromSupply(const QHash<QString, QString>& supply, std::optional<bool> externalConnected);

// The first system battery below sysfsRoot/class/power_supply (peripheral batteries such as
// a mouse's are not the machine's); absent when there is none.
std::optional<QVariantMap> readBatteryRegistry(const QString& sysfsRoot);

} // namespace tallowmere::battery
