#include "power/BatteryRules.h"
#include "power/BatterySysfsReader.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using battery::readBatteryRegistry;
using battery::registryFromProperties;

std::optional<RegistryBatteryHealth> registryOf(const char* fixture)
{
    return registryFromProperties(readBatteryRegistry(test::fixturePath(QStringLiteral("power/") + fixture)));
}

TEST(BatterySysfs, EnergyReportingDriverIsConvertedWithTheDesignVoltage)
{
    const auto r = registryOf("sysfs-thinkpad");
    ASSERT_TRUE(r);
    EXPECT_TRUE(r->isInstalled);
    EXPECT_EQ(r->percentage, 76);
    EXPECT_EQ(r->isCharging, false);
    EXPECT_EQ(r->isFullyCharged, false);
    EXPECT_EQ(r->externalConnected, false);  // the AC entry is offline
    EXPECT_EQ(r->cycleCount, 412);
    // µWh / µV: 57 Wh at 11.58 V design voltage.
    EXPECT_EQ(r->designCapacity, 4922);
    EXPECT_EQ(r->maxCapacity, 4342);
    EXPECT_EQ(r->currentCapacity, 3340);
    // Power over voltage, negative while discharging.
    EXPECT_EQ(r->amperage, -514);
    EXPECT_EQ(r->voltage, 12192);
    EXPECT_EQ(r->condition, std::nullopt);
}

TEST(BatterySysfs, ChargeReportingDriverWithTypeFilesAndAUsbAdapter)
{
    const auto r = registryOf("sysfs-charge-driver");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->percentage, 50);
    EXPECT_EQ(r->isCharging, true);
    EXPECT_EQ(r->externalConnected, true);  // the USB-C source is online although ADP1 is not
    EXPECT_EQ(r->cycleCount, 0);
    EXPECT_EQ(r->designCapacity, 6843);
    EXPECT_EQ(r->maxCapacity, 5610);
    EXPECT_EQ(r->currentCapacity, 2805);
    // This driver reports the current negated while charging; charging reads positive.
    EXPECT_EQ(r->amperage, 1523);
    EXPECT_EQ(r->voltage, 8412);
    EXPECT_EQ(r->condition, QString("Good"));
}

TEST(BatterySysfs, WithoutAnAdapterEntryTheBatteryStateTellsWhetherMainsIsPresent)
{
    const auto r = registryOf("sysfs-no-adapter");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->externalConnected, true);  // "Not charging" happens on mains only
    EXPECT_EQ(r->isCharging, false);
    EXPECT_EQ(r->percentage, 100);  // no CAPACITY: charge now over charge full
    EXPECT_EQ(r->condition, std::nullopt);  // "Unknown" is no condition

    const BatteryInfo alone = *battery::registryAlone(r);
    EXPECT_EQ(alone.powerSource, QString("AC Power"));
    EXPECT_EQ(alone.maximumCapacityPercent(), 59);
    EXPECT_EQ(alone.healthStatus(), "Service Recommended");
}

TEST(BatterySysfs, PeripheralBatteriesAndMissingFoldersGiveNoEntry)
{
    EXPECT_FALSE(registryOf("sysfs-desktop-mouse"));
    EXPECT_FALSE(registryOf("no-such-tree"));
}

TEST(BatterySysfs, OddAndTruncatedFilesDoNotBreakTheReading)
{
    QTemporaryDir root;
    test::writeFile(root.path(), "class/power_supply/BAT0/uevent",
                    "POWER_SUPPLY_TYPE=Battery\n=orphan\nno equals sign\nPOWER_SUPPLY_PRESENT=0\n"
                    "POWER_SUPPLY_CAPACITY=abc\nPOWER_SUPPLY_ENERGY_FULL_DESIGN=50000000\n"
                    "POWER_SUPPLY_VOLTAGE_MIN_DESIGN=0\nPOWER_SUPPLY_STATUS=Unknown\nPOWER_SUPPLY_CURRENT_NOW=12");
    const auto r = registryFromProperties(readBatteryRegistry(root.path()));
    ASSERT_TRUE(r);
    EXPECT_FALSE(r->isInstalled);
    EXPECT_EQ(r->percentage, std::nullopt);
    EXPECT_EQ(r->designCapacity, std::nullopt);  // no usable voltage to convert energy with
    EXPECT_EQ(r->isCharging, std::nullopt);
    EXPECT_EQ(r->externalConnected, std::nullopt);
    EXPECT_EQ(r->amperage, 0);  // 12 µA rounds to 0 mA, sign left alone in an unknown state
    EXPECT_FALSE(battery::registryAlone(r));

    const auto fields = battery::parseUevent("POWER_SUPPLY_MODEL_NAME=DELL 0RNP72A\r\nX=a=b\n");
    EXPECT_EQ(fields.value("MODEL_NAME"), "DELL 0RNP72A");
    EXPECT_EQ(fields.value("X"), "a=b");
}

TEST(BatterySysfs, ThisMachinesPowerSupplyClassReadsConsistently)
{
    const QDir dir(QStringLiteral("/sys/class/power_supply"));
    bool hasSystemBattery = false;
    for (const QString& name : dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)) {
        const QByteArray type = test::readFile(dir.filePath(name) + "/type").trimmed();
        const QByteArray scope = test::readFile(dir.filePath(name) + "/scope").trimmed();
        hasSystemBattery |= type == "Battery" && scope != "Device";
    }
    EXPECT_EQ(readBatteryRegistry(QStringLiteral("/sys")).has_value(), hasSystemBattery);
}

} // namespace
} // namespace tallowmere
