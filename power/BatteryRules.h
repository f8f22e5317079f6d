#pragma once

#include "power/BatteryInfo.h"

#include <QList>
#include <QVariant>
#include <QVariantMap>

#include <optional>

// The platform-free half of the battery reading: dictionaries in, records out. The readers
// translate UPower devices and sysfs power-supply entries into these dictionaries.
namespace tallowmere::battery {

// Dictionary values of the wrong kind count as missing. Numbers are any integer or floating
// type (the integer part is taken); flags are Booleans or numbers; texts are strings only.
std::optional<int> numberValue(const QVariant& value);
std::optional<bool> flagValue(const QVariant& value);
std::optional<QString> textValue(const QVariant& value);

// The driver entry's properties ("BatteryInstalled", "CurrentCapacity", "CycleCount", ...),
// absent when there is no entry.
std::optional<RegistryBatteryHealth> registryFromProperties(const std::optional<QVariantMap>& properties);

// The reading built from the driver entry alone; absent without an installed battery.
std::optional<BatteryInfo> registryAlone(const std::optional<RegistryBatteryHealth>& registry);

// Whether a power-source description is the machine's own battery, and whether it is present.
bool isInternalBattery(const QVariantMap& description);
bool isPresentSource(const QVariantMap& description);

// One internal battery's description merged with the driver entry: description values win.
BatteryInfo mergeDescription(const QVariantMap& description, const std::optional<RegistryBatteryHealth>& registry);

// The whole reading: `descriptions` is absent when no power-source list could be had.
BatteryInfo combine(const std::optional<QList<QVariantMap>>& descriptions,
                    const std::optional<RegistryBatteryHealth>& registry);

} // namespace tallowmere::battery
