#include "power/BatteryUPowerReader.h"

#include "power/BatteryRules.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>

#include <cmath>

namespace tallowmere::battery {

namespace {

// UPower's device kinds and states, as its interface documents them.
constexpr uint kindBattery = 2;
constexpr uint stateCharging = 1;
constexpr uint stateDischarging = 2;
constexpr uint stateFullyCharged = 4;
constexpr uint statePendingCharge = 5;
constexpr uint statePendingDischarge = 6;

// A reading happens on the main thread; a daemon that hangs must not freeze the program.
constexpr int callTimeoutMs = 2000;

const QString acPower = QStringLiteral("AC Power");
const QString batteryPower = QStringLiteral("Battery Power");

std::optional<double> doubleOf(const QVariantMap& map, const char* key)
{
    const QVariant value = map.value(QLatin1StringView(key));
    if (!numberValue(value))
        return std::nullopt;
    const double d = value.toDouble();
    return std::isfinite(d) ? std::optional<double>(d) : std::nullopt;
}

std::optional<QString> stateText(std::optional<int> state, std::optional<bool> onBattery)
{
    if (onBattery)
        return *onBattery ? batteryPower : acPower;
    if (!state)
        return std::nullopt;
    switch (uint(*state)) {
    case stateDischarging:
    case statePendingDischarge:
        return batteryPower;
    case stateCharging:
    case stateFullyCharged:
    case statePendingCharge:
        return acPower;
    default:
        return std::nullopt;
    }
}

QDBusMessage callUPower(const QDBusConnection& bus, const QString& path, const QString& interface,
                        const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(QLatin1StringView(upowerService), path, interface, method);
    message.setArguments(arguments);
    return bus.call(message, QDBus::Block, callTimeoutMs);
}

std::optional<QVariantMap> allProperties(const QDBusConnection& bus, const QString& path, const char* interface)
{
    const QDBusReply<QVariantMap> reply = callUPower(bus, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                     QStringLiteral("GetAll"), {QString::fromLatin1(interface)});
    if (!reply.isValid())
        return std::nullopt;
    return reply.value();
}

} // namespace

QVariantMap describeUPowerDevice(const QVariantMap& device, std::optional<bool> onBattery)
{
    QVariantMap d;
    const auto kind = numberValue(device.value(QStringLiteral("Type")));
    const auto state = numberValue(device.value(QStringLiteral("State")));
    const bool suppliesSystem = flagValue(device.value(QStringLiteral("PowerSupply"))).value_or(true);
    if (kind != int(kindBattery)) {
        d.insert(QStringLiteral("Type"), kind == 1 ? QStringLiteral("Line Power") : QStringLiteral("Accessory"));
        return d;
    }
    // A battery that does not power the machine belongs to a peripheral.
    d.insert(QStringLiteral("Type"), suppliesSystem ? QStringLiteral("InternalBattery") : QStringLiteral("Battery"));
    d.insert(QStringLiteral("Transport Type"), suppliesSystem ? QStringLiteral("Internal") : QStringLiteral("External"));
    if (auto present = flagValue(device.value(QStringLiteral("IsPresent"))))
        d.insert(QStringLiteral("Is Present"), *present);
    if (auto percentage = doubleOf(device, "Percentage"))
        d.insert(QStringLiteral("Current Capacity"), int(std::lround(*percentage)));
    if (state && *state != 0) {
        d.insert(QStringLiteral("Is Charging"), uint(*state) == stateCharging);
        d.insert(QStringLiteral("Is Finishing Charge"), uint(*state) == stateFullyCharged);
    }
    if (auto text = stateText(state, onBattery))
        d.insert(QStringLiteral("Power Source State"), *text);
    if (auto seconds = numberValue(device.value(QStringLiteral("TimeToEmpty"))))
        d.insert(QStringLiteral("Time to Empty"), *seconds / 60);
    if (auto seconds = numberValue(device.value(QStringLiteral("TimeToFull"))))
        d.insert(QStringLiteral("Time to Full Charge"), *seconds / 60);
    const auto volts = doubleOf(device, "Voltage");
    if (volts && *volts > 0) {
        d.insert(QStringLiteral("Voltage"), int(std::lround(*volts * 1000.0)));
        // UPower reports the rate unsigned; the current is negative while discharging.
        if (auto watts = doubleOf(device, "EnergyRate"); watts && *watts > 0) {
            const int milliAmps = int(std::lround(*watts / *volts * 1000.0));
            d.insert(QStringLiteral("Current"), state == int(stateDischarging) ? -milliAmps : milliAmps);
        }
    }
    return d;
}

QVariantMap describeUPowerDaemon(bool onBattery)
{
    return {{QStringLiteral("Power Source State"), onBattery ? batteryPower : acPower}};
}

std::optional<QList<QVariantMap>> readPowerSourceDescriptions(const QDBusConnection& bus)
{
    if (!bus.isConnected())
        return std::nullopt;
    const auto daemon = allProperties(bus, QLatin1StringView(upowerPath), upowerInterface);
    if (!daemon)
        return std::nullopt;
    const QDBusReply<QList<QDBusObjectPath>> devices =
        callUPower(bus, QLatin1StringView(upowerPath), QLatin1StringView(upowerInterface),
                   QStringLiteral("EnumerateDevices"), {});
    if (!devices.isValid())
        return std::nullopt;

    const std::optional<bool> onBattery = flagValue(daemon->value(QStringLiteral("OnBattery")));
    QList<QVariantMap> descriptions;
    if (onBattery)
        descriptions.append(describeUPowerDaemon(*onBattery));
    for (const QDBusObjectPath& path : devices.value()) {
        if (auto properties = allProperties(bus, path.path(), upowerDeviceInterface))
            descriptions.append(describeUPowerDevice(*properties, onBattery));
    }
    return descriptions;
}

} // namespace tallowmere::battery
