#include "power/BatteryRules.h"
#include "power/BatterySysfsReader.h"

#include "tests/support/TestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using battery::readBatteryRegistry;
using battery::registryFromProperties;

std::optional<RegistryBatteryHealth> registryOf(const QString& root)
{
    return registryFromProperties(readBatteryRegistry(root));
}
std::optional<RegistryBatteryHealth> fixture(const char* name)
{
    return registryOf(test::fixturePath(QStringLiteral("power/") + name));
}

TEST(BatterySysfs, FixtureTrees)
{
    // Energy in µWh turned into mAh with the 11.58 V design voltage; current from power over
    // voltage, negative while discharging; the AC entry is offline.
    EXPECT_EQ(fixture("sysfs-thinkpad"),
              (RegistryBatteryHealth{true, 76, false, false, false, 412, 4922, 4342, 3340, std::nullopt, -514, 12192}));
    // Type from the type files; the USB-C source is online although ADP1 is not; this driver
    // reports the current negated while charging, which reads positive here.
    EXPECT_EQ(fixture("sysfs-charge-driver"),
              (RegistryBatteryHealth{true, 50, true, false, true, 0, 6843, 5610, 2805, QString("Good"), 1523, 8412}));
    // Without an adapter, "Not charging" means mains; no capacity file: charge now over full;
    // "Unknown" is no condition.
    const auto alone = fixture("sysfs-no-adapter");
    ASSERT_TRUE(alone);
    EXPECT_TRUE(alone->externalConnected == true && alone->isCharging == false && alone->percentage == 100
                && !alone->condition);
    EXPECT_EQ(battery::registryAlone(alone)->powerSource, QString("AC Power"));
    // Peripheral batteries and missing folders give no entry.
    EXPECT_FALSE(fixture("sysfs-desktop-mouse"));
    EXPECT_FALSE(fixture("no-such-tree"));
}

TEST(BatterySysfs, OddAndTruncatedFilesDoNotBreakTheReading)
{
    QTemporaryDir root;
    test::writeFile(root.path(), "class/power_supply/BAT0/uevent",
                    "POWER_SUPPLY_TYPE=Battery\n=orphan\nno equals sign\nPOWER_SUPPLY_PRESENT=0\n"
                    "POWER_SUPPLY_CAPACITY=abc\nPOWER_SUPPLY_ENERGY_FULL_DESIGN=50000000\n"
                    "POWER_SUPPLY_VOLTAGE_MIN_DESIGN=0\nPOWER_SUPPLY_STATUS=Unknown\nPOWER_SUPPLY_CURRENT_NOW=12");
    // No usable voltage to convert energy with; 12 µA rounds to 0 mA, sign left alone.
    RegistryBatteryHealth expected;
    expected.amperage = 0;
    EXPECT_EQ(registryOf(root.path()), expected);
    EXPECT_FALSE(battery::registryAlone(expected));
}

} // namespace
} // namespace tallowmere
