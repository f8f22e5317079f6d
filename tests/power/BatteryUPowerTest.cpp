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

    QDBusMessage mock(const QString& path, const char* method, const QVariantList& arguments)
    {
        const QDBusMessage reply = bus.callMock(upower, path, QLatin1StringView(method), arguments);
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
        return reply;
    }
    QString addBattery(const char* method, const char* name, double percentage, qlonglong seconds,
                       const QVariantMap& properties = {})
    {
        const QString device = mock(upowerPath, method, {QString::fromLatin1(name), QStringLiteral("Mock"), percentage,
                                                         seconds}).arguments().value(0).toString();
        if (!properties.isEmpty())
            mock(upowerPath, "SetDeviceProperties", {QVariant::fromValue(QDBusObjectPath(device)), properties});
        return device;
    }
    BatteryInfo read(const QString& sysfsRoot = noSysfs) { return BatteryInfo::current(bus.connection(), sysfsRoot); }

    test::PrivateBus bus;
};

TEST_F(BatteryUPower, ChargingBatteryMergedWithTheDriverEntry)
{
    ASSERT_TRUE(bus.startTemplate(QStringLiteral("upower"), upower));
    const QString path = addBattery("AddChargingBattery", "mock_BAT", 80.0, 3900);
    // The template's devices lack these two; the mock object can grow them.
    for (const auto& [name, value] : {std::pair{"Voltage", 12.5}, std::pair{"EnergyRate", 25.0}})
        mock(path, "AddProperty", {QStringLiteral("org.freedesktop.UPower.Device"), QString::fromLatin1(name),
                                   QVariant::fromValue(QDBusVariant(value))});
    const BatteryInfo info = read(test::fixturePath(QStringLiteral("power/sysfs-thinkpad")));
    EXPECT_EQ(info.percentage, 80);  // UPower's figure wins over the driver's 76
    EXPECT_EQ(info.powerSource, QString("AC Power"));
    EXPECT_EQ(info.statusLine(), QString::fromUtf8("Charging \u00b7 Full in 1h 5m"));
    EXPECT_EQ(info.voltage, 12500);
    EXPECT_EQ(info.amperage, 2000);
    // Only the driver knows cycles and capacities.
    EXPECT_EQ(info.cycleCount, 412);
    EXPECT_EQ(info.maximumCapacityPercent(), 88);
}

TEST_F(BatteryUPower, OnlyAPresentSystemBatteryCounts)
{
    ASSERT_TRUE(bus.startTemplate(QStringLiteral("upower"), upower, QStringLiteral(R"({"OnBattery": true})")));
    mock(upowerPath, "AddAC", {QStringLiteral("mock_AC"), QStringLiteral("Mock AC")});
    addBattery("AddDischargingBattery", "mouse_BAT", 40.0, 0, {{"PowerSupply", false}});
    addBattery("AddDischargingBattery", "slot_BAT", 90.0, 600, {{"IsPresent", false}});
    EXPECT_EQ(read(), BatteryInfo::noBattery());
    addBattery("AddDischargingBattery", "zz_BAT", 30.4, 1250);
    const BatteryInfo info = read();
    EXPECT_TRUE(info.isPresent && info.percentage == 30 && info.isCharging == false);
    EXPECT_EQ(info.powerSource, QString("Battery Power"));
    EXPECT_EQ(info.timeRemainingMinutes, 20);  // 1250 s, whole minutes
}

TEST_F(BatteryUPower, WithoutUPowerTheDriverEntryOrNothingRemains)
{
    EXPECT_EQ(read(), BatteryInfo::noBattery());
    EXPECT_EQ(read(test::fixturePath(QStringLiteral("power/sysfs-charge-driver"))).percentage, 50);
    // A connection that never reached a bus behaves the same.
    EXPECT_EQ(BatteryInfo::current(QDBusConnection(QStringLiteral("never-connected")), noSysfs), BatteryInfo::noBattery());
}

} // namespace
} // namespace tallowmere
