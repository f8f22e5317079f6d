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

TEST(BatterySysfs, EnergyAndChargeReportingDrivers)
{
    // Energy in µWh turned into mAh with the 11.58 V design voltage; current from power over
    // voltage, negative while discharging; the AC entry is offline.
    const RegistryBatteryHealth thinkpad{true, 76, false, false, false, 412, 4922, 4342, 3340, std::nullopt, -514, 12192};
    EXPECT_EQ(registryOf("sysfs-thinkpad"), thinkpad);
    // Type from the type files; the USB-C source is online although ADP1 is not; this driver
    // reports the current negated while charging, which reads positive here.
    const RegistryBatteryHealth charge{true, 50, true, false, true, 0, 6843, 5610, 2805, QString("Good"), 1523, 8412};
    EXPECT_EQ(registryOf("sysfs-charge-driver"), charge);
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
