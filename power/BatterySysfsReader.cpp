#include "power/BatterySysfsReader.h"

#include <QDir>
#include <QFile>

#include <cmath>

namespace tallowmere::battery {

namespace {

std::optional<qlonglong> integerOf(const QHash<QString, QString>& supply, const char* key)
{
    const auto it = supply.constFind(QLatin1StringView(key));
    if (it == supply.constEnd())
        return std::nullopt;
    bool ok = false;
    const qlonglong value = it->trimmed().toLongLong(&ok);
    return ok ? std::optional<qlonglong>(value) : std::nullopt;
}

// Micro-units to milli-units, rounded to the nearest.
qlonglong milli(qlonglong micro)
{
    return std::llround(double(micro) / 1000.0);
}

// Drivers report energy (µWh) or charge (µAh); energy is turned into charge with the design
// voltage so capacities always read in mAh.
std::optional<qlonglong> chargeMilliAmpHours(const QHash<QString, QString>& supply, const char* chargeKey,
                                             const char* energyKey)
{
    if (auto charge = integerOf(supply, chargeKey))
        return milli(*charge);
    const auto energy = integerOf(supply, energyKey);
    if (!energy)
        return std::nullopt;
    std::optional<qlonglong> volts = integerOf(supply, "VOLTAGE_MIN_DESIGN");
    if (!volts || *volts <= 0)
        volts = integerOf(supply, "VOLTAGE_MAX_DESIGN");
    if (!volts || *volts <= 0)
        volts = integerOf(supply, "VOLTAGE_NOW");
    if (!volts || *volts <= 0)
        return std::nullopt;
    return std::llround(double(*energy) / double(*volts) * 1000.0);
}

// Current in mA, negative while discharging whatever sign the driver uses.
std::optional<qlonglong> signedCurrent(const QHash<QString, QString>& supply, const QString& status)
{
    std::optional<qlonglong> current;
    if (auto micro = integerOf(supply, "CURRENT_NOW")) {
        current = milli(*micro);
    } else {
        const auto power = integerOf(supply, "POWER_NOW");
        const auto volts = integerOf(supply, "VOLTAGE_NOW");
        if (power && volts && *volts > 0)
            current = std::llround(double(*power) / double(*volts) * 1000.0);
    }
    if (!current)
        return std::nullopt;
    if (status == QLatin1StringView("Discharging"))
        return -std::llabs(*current);
    if (status == QLatin1StringView("Charging"))
        return std::llabs(*current);
    return current;
}

std::optional<int> percentOf(const QHash<QString, QString>& supply)
{
    if (auto capacity = integerOf(supply, "CAPACITY"))
        return int(*capacity);
    auto now = chargeMilliAmpHours(supply, "CHARGE_NOW", "ENERGY_NOW");
    auto full = chargeMilliAmpHours(supply, "CHARGE_FULL", "ENERGY_FULL");
    if (!now || !full || *full <= 0)
        return std::nullopt;
    return int(std::lround(double(*now) / double(*full) * 100.0));
}

QByteArray readAttribute(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

// A supply's uevent, with the type and scope files filling in what older kernels leave out.
QHash<QString, QString> readSupply(const QString& dir)
{
    QHash<QString, QString> supply = parseUevent(readAttribute(dir + QStringLiteral("/uevent")));
    for (const char* attribute : {"type", "scope", "online", "present"}) {
        const QString key = QString::fromLatin1(attribute).toUpper();
        if (supply.contains(key))
            continue;
        const QByteArray value = readAttribute(dir + QLatin1Char('/') + QLatin1StringView(attribute)).trimmed();
        if (!value.isEmpty())
            supply.insert(key, QString::fromUtf8(value));
    }
    return supply;
}

} // namespace

QHash<QString, QString> parseUevent(const QByteArray& text)
{
    QHash<QString, QString> values;
    for (const QByteArray& line : text.split('\n')) {
        const qsizetype eq = line.indexOf('=');
        if (eq <= 0)
            continue;
        QByteArray key = line.left(eq).trimmed();
        if (key.startsWith("POWER_SUPPLY_"))
            key.remove(0, int(sizeof("POWER_SUPPLY_") - 1));
        values.insert(QString::fromUtf8(key), QString::fromUtf8(line.mid(eq + 1)).trimmed());
    }
    return values;
}

QVariantMap registryPropertiesFromSupply(const QHash<QString, QString>& supply, std::optional<bool> externalConnected)
{
    QVariantMap p;
    const QString status = supply.value(QStringLiteral("STATUS"));
    const auto present = integerOf(supply, "PRESENT");
    p.insert(QStringLiteral("BatteryInstalled"), present ? *present != 0 : true);
    if (auto percent = percentOf(supply))
        p.insert(QStringLiteral("CurrentCapacity"), *percent);
    if (!status.isEmpty() && status != QLatin1StringView("Unknown")) {
        p.insert(QStringLiteral("IsCharging"), status == QLatin1StringView("Charging"));
        p.insert(QStringLiteral("FullyCharged"), status == QLatin1StringView("Full"));
        // Without an adapter entry the battery's own state tells whether mains is present.
        if (!externalConnected)
            externalConnected = status != QLatin1StringView("Discharging");
    }
    if (externalConnected)
        p.insert(QStringLiteral("ExternalConnected"), *externalConnected);
    if (auto cycles = integerOf(supply, "CYCLE_COUNT"))
        p.insert(QStringLiteral("CycleCount"), *cycles);
    if (auto design = chargeMilliAmpHours(supply, "CHARGE_FULL_DESIGN", "ENERGY_FULL_DESIGN"))
        p.insert(QStringLiteral("DesignCapacity"), *design);
    if (auto full = chargeMilliAmpHours(supply, "CHARGE_FULL", "ENERGY_FULL"))
        p.insert(QStringLiteral("NominalChargeCapacity"), *full);
    if (auto now = chargeMilliAmpHours(supply, "CHARGE_NOW", "ENERGY_NOW"))
        p.insert(QStringLiteral("AppleRawCurrentCapacity"), *now);
    const QString health = supply.value(QStringLiteral("HEALTH"));
    if (!health.isEmpty() && health != QLatin1StringView("Unknown"))
        p.insert(QStringLiteral("BatteryHealth"), health);
    if (auto current = signedCurrent(supply, status))
        p.insert(QStringLiteral("Amperage"), *current);
    if (auto volts = integerOf(supply, "VOLTAGE_NOW"))
        p.insert(QStringLiteral("Voltage"), milli(*volts));
    return p;
}

std::optional<QVariantMap> readBatteryRegistry(const QString& sysfsRoot)
{
    const QDir dir(sysfsRoot + QStringLiteral("/class/power_supply"));
    const QStringList names = dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System, QDir::Name);
    std::optional<QHash<QString, QString>> battery;
    std::optional<bool> externalConnected;
    for (const QString& name : names) {
        const QHash<QString, QString> supply = readSupply(dir.filePath(name));
        const QString type = supply.value(QStringLiteral("TYPE"));
        if (type == QLatin1StringView("Battery")) {
            if (!battery && supply.value(QStringLiteral("SCOPE")) != QLatin1StringView("Device"))
                battery = supply;
        } else if (!type.isEmpty() && supply.contains(QStringLiteral("ONLINE"))) {
            const bool online = integerOf(supply, "ONLINE").value_or(0) != 0;
            externalConnected = externalConnected.value_or(false) || online;
        }
    }
    if (!battery)
        return std::nullopt;
    return registryPropertiesFromSupply(*battery, externalConnected);
}

} // namespace tallowmere::battery
