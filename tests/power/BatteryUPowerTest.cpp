#include "power/BatteryInfo.h"
#include "power/BatteryUPowerReader.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/TestSupport.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

const QString upower = QStringLiteral("org.freedesktop.UPower");
const QString upowerPath = QStringLiteral("/org/freedesktop/UPower");
const QString noSysfs = QStringLiteral("/nonexistent-sysfs");

class BatteryUPower : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.isUp()); }

    void startUPower(const QString& parameters = {})
    {
        ASSERT_TRUE(bus.startTemplate(QStringLiteral("upower"), upower, parameters));
    }

    QString addBattery(const char* method, const char* name, double percentage, qlonglong seconds)
    {
        const QDBusMessage reply = bus.callMock(upower, upowerPath, QLatin1StringView(method),
                                                {QString::fromLatin1(name), QStringLiteral("Mock"), percentage, seconds});
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
        return reply.arguments().value(0).toString();
    }

    void setProperties(const QString& device, const QVariantMap& properties)
    {
        const QDBusMessage reply = bus.callMock(upower, upowerPath, QStringLiteral("SetDeviceProperties"),
                                                {QVariant::fromValue(QDBusObjectPath(device)), properties});
        ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    }

    // The template's devices lack some properties; the mock object can grow them.
    void addProperty(const QString& device, const char* name, const QVariant& value)
    {
        const QDBusMessage reply = bus.callMock(upower, device, QStringLiteral("AddProperty"),
                                                {QStringLiteral("org.freedesktop.UPower.Device"),
                                                 QString::fromLatin1(name), QVariant::fromValue(QDBusVariant(value))});
        ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    }

    BatteryInfo read(const QString& sysfsRoot = noSysfs) { return BatteryInfo::current(bus.connection(), sysfsRoot); }

    test::PrivateBus bus;
};

TEST_F(BatteryUPower, DischargingBatteryOnBattery)
{
    startUPower(QStringLiteral(R"({"OnBattery": true})"));
    addBattery("AddDischargingBattery", "mock_BAT", 30.4, 1250);
    const BatteryInfo info = read();
    EXPECT_TRUE(info.isPresent);
    EXPECT_EQ(info.percentage, 30);
    EXPECT_EQ(info.isCharging, false);
    EXPECT_EQ(info.powerSource, QString("Battery Power"));
    EXPECT_EQ(info.timeRemainingMinutes, 20);  // 1250 s, whole minutes
    EXPECT_EQ(info.menuBarTimeText(), QString("0:20"));
    EXPECT_EQ(info.designCapacity, std::nullopt);
}

TEST_F(BatteryUPower, ChargingBatteryMergedWithTheDriverEntry)
{
    startUPower();
    const QString path = addBattery("AddChargingBattery", "mock_BAT", 80.0, 3900);
    addProperty(path, "Voltage", 12.5);
    addProperty(path, "EnergyRate", 25.0);
    const BatteryInfo info = read(test::fixturePath(QStringLiteral("power/sysfs-thinkpad")));
    EXPECT_EQ(info.percentage, 80);  // UPower's figure wins over the driver's 76
    EXPECT_EQ(info.isCharging, true);
    EXPECT_EQ(info.powerSource, QString("AC Power"));
    EXPECT_EQ(info.timeToFullChargeMinutes, 65);
    EXPECT_EQ(info.statusLine(), QString::fromUtf8("Charging \u00b7 Full in 1h 5m"));
    EXPECT_EQ(info.voltage, 12500);
    EXPECT_EQ(info.amperage, 2000);
    // Only the driver knows cycles and capacities.
    EXPECT_EQ(info.cycleCount, 412);
    EXPECT_EQ(info.designCapacity, 4922);
    EXPECT_EQ(info.maximumCapacityPercent(), 88);
    EXPECT_EQ(info.healthStatus(), "Normal");
}

TEST_F(BatteryUPower, AbsentBatteriesAndPeripheralsAreNotTheMachinesBattery)
{
    startUPower();
    bus.callMock(upower, upowerPath, QStringLiteral("AddAC"), {QStringLiteral("mock_AC"), QStringLiteral("Mock AC")});
    const QString mouse = addBattery("AddDischargingBattery", "mouse_BAT", 40.0, 0);
    setProperties(mouse, {{"PowerSupply", false}});
    const QString removed = addBattery("AddDischargingBattery", "slot_BAT", 90.0, 600);
    setProperties(removed, {{"IsPresent", false}});
    EXPECT_EQ(read(), BatteryInfo::noBattery(QString("AC Power")));

    const auto descriptions = battery::readPowerSourceDescriptions(bus.connection());
    ASSERT_TRUE(descriptions);
    EXPECT_EQ(descriptions->size(), 4);  // the daemon's state and three devices

    addBattery("AddDischargingBattery", "zz_BAT", 55.0, 600);
    EXPECT_EQ(read().percentage, 55);
}

TEST_F(BatteryUPower, WithoutUPowerTheDriverEntryOrNothingRemains)
{
    EXPECT_FALSE(battery::readPowerSourceDescriptions(bus.connection()));
    EXPECT_EQ(read(), BatteryInfo::noBattery());
    const BatteryInfo fromDriver = read(test::fixturePath(QStringLiteral("power/sysfs-charge-driver")));
    EXPECT_TRUE(fromDriver.isPresent);
    EXPECT_EQ(fromDriver.powerSource, QString("AC Power"));
    EXPECT_EQ(fromDriver.percentage, 50);

    // A connection that never reached a bus behaves the same.
    EXPECT_EQ(BatteryInfo::current(QDBusConnection(QStringLiteral("never-connected")), noSysfs), BatteryInfo::noBattery());
}

} // namespace
} // namespace tallowmere
