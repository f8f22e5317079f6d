#pragma once

#include <QDBusConnection>
#include <QList>
#include <QVariantMap>

#include <optional>

// UPower (org.freedesktop.UPower on the system bus) read as the list of power sources, each
// described with the keys the merge understands ("Type", "Is Present", "Current Capacity", ...).
namespace tallowmere::battery {

inline constexpr char upowerService[] = "org.freedesktop.UPower";
inline constexpr char upowerPath[] = "/org/freedesktop/UPower";
inline constexpr char upowerInterface[] = "org.freedesktop.UPower";
inline constexpr char upowerDeviceInterface[] = "org.freedesktop.UPower.Device";

// One device's UPower properties as a power-source description. `onBattery` is the daemon's
// own verdict, which is what the machine runs on; absent, the device's state decides.
QVariantMap describeUPowerDevice(const QVariantMap& device, std::optional<bool> onBattery);

// The daemon's state as a description holding only "Power Source State".
QVariantMap describeUPowerDaemon(bool onBattery);

// The daemon's description followed by one per device; absent when UPower does not answer.
std::optional<QList<QVariantMap>> readPowerSourceDescriptions(const QDBusConnection& bus);

} // namespace tallowmere::battery
