#include "power/BatteryMonitoringService.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/TestSupport.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using namespace std::chrono_literals;

const QString upower = QStringLiteral("org.freedesktop.UPower");
const QString upowerPath = QStringLiteral("/org/freedesktop/UPower");
const QString logind = QStringLiteral("org.freedesktop.login1");

// Periods long enough that only the events under test cause readings.
BatteryMonitoringService::Timing quietTiming(std::chrono::milliseconds retry = 1h)
{
    return {.refreshPeriod = 1h, .wakeRetryInterval = retry, .wakeRetries = 6};
}

// Runs the event loop a little so signals already sent are delivered.
void settle() { test::waitUntil([] { return false; }, 200); }

class BatteryService : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.isUp() && bus.startTemplate(QStringLiteral("logind"), logind)); }

    void emitPrepareForSleep(bool goingToSleep)
    {
        const QDBusMessage reply = bus.callMock(logind, QStringLiteral("/org/freedesktop/login1"), QStringLiteral("EmitSignal"),
                                                {QStringLiteral("org.freedesktop.login1.Manager"),
                                                 QStringLiteral("PrepareForSleep"), QStringLiteral("b"),
                                                 QVariantList{goingToSleep}});
        ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    }
    void setPercentage(const QString& device, double percentage)
    {
        bus.callMock(upower, upowerPath, QStringLiteral("SetDeviceProperties"),
                     {QVariant::fromValue(QDBusObjectPath(device)), QVariantMap{{"Percentage", percentage}}});
    }

    test::PrivateBus bus;
};

TEST_F(BatteryService, FollowsUPowerChangesWhileStartedOnly)
{
    ASSERT_TRUE(bus.startTemplate(QStringLiteral("upower"), upower));
    const QDBusConnection connection = bus.connection();
    BatteryMonitoringService service(connection, [connection] { return BatteryInfo::current(connection, "/none"); },
                                     quietTiming());
    EXPECT_EQ(service.battery(), BatteryInfo::noBattery(QString("AC Power")));
    QSignalSpy changed(&service, &BatteryMonitoringService::batteryChanged);
    service.start();
    service.start();  // a second start neither reads twice nor listens twice
    EXPECT_EQ(changed.count(), 0);  // unchanged reading: nobody is told

    const QString device = bus.callMock(upower, upowerPath, QStringLiteral("AddDischargingBattery"),
                                        {QStringLiteral("mock_BAT"), QStringLiteral("Mock"), 42.0, qlonglong(600)})
                               .arguments().value(0).toString();
    ASSERT_TRUE(test::waitUntil([&] { return service.battery().percentage == 42; }));
    setPercentage(device, 41.0);
    ASSERT_TRUE(test::waitUntil([&] { return service.battery().percentage == 41; }));
    EXPECT_EQ(changed.count(), 2);

    service.stop();
    setPercentage(device, 12.0);
    settle();
    EXPECT_EQ(service.battery().percentage, 41);  // the last value is kept
    EXPECT_EQ(changed.count(), 2);
    service.start();  // starting again reads at once
    EXPECT_EQ(service.battery().percentage, 12);
}

TEST_F(BatteryService, WakeBringsSixRetriesUntilStoppedAndASecondWakeRestartsThem)
{
    int reads = 0;
    BatteryMonitoringService service(bus.connection(), [&reads] {
        ++reads;
        return BatteryInfo::noBattery();
    }, quietTiming(150ms));
    emitPrepareForSleep(false);
    settle();
    EXPECT_EQ(reads, 1);  // only the reading at construction: not started, no wake handling

    service.start();
    emitPrepareForSleep(true);  // going to sleep is not a wake
    settle();
    EXPECT_EQ(reads, 2);

    emitPrepareForSleep(false);
    ASSERT_TRUE(test::waitUntil([&] { return reads == 5; }));  // the wake reading and two retries
    const int beforeSecondWake = reads;
    emitPrepareForSleep(false);
    ASSERT_TRUE(test::waitUntil([&] { return !service.isRetryingAfterWake(); }, 10000));
    settle();
    EXPECT_EQ(reads - beforeSecondWake, 1 + 6);

    // A burst under way ends with stop().
    emitPrepareForSleep(false);
    ASSERT_TRUE(test::waitUntil([&] { return service.isRetryingAfterWake(); }));
    service.stop();
    const int atStop = reads;
    settle();
    EXPECT_EQ(reads, atStop);
    EXPECT_FALSE(service.isRetryingAfterWake());
}

TEST_F(BatteryService, RetriesEndOnceATimeEstimateAppears)
{
    int reads = 0;
    BatteryMonitoringService service(bus.connection(), [&reads] {
        BatteryInfo info;
        info.isPresent = true;
        info.timeRemainingMinutes = ++reads >= 5 ? 90 : -1;  // with the third reading after the wake
        return info;
    }, quietTiming(30ms));
    service.start();
    QSignalSpy changed(&service, &BatteryMonitoringService::batteryChanged);
    emitPrepareForSleep(false);
    ASSERT_TRUE(test::waitUntil([&] { return reads >= 3 && !service.isRetryingAfterWake(); }));
    EXPECT_EQ(reads, 5);
    EXPECT_EQ(changed.count(), 1);  // equal readings before the estimate were dropped
}

TEST(BatteryServicePeriodic, RefreshesOnItsPeriodWithoutAnyBus)
{
    int reads = 0;
    BatteryMonitoringService service(QDBusConnection(QStringLiteral("no-bus")), [&reads] {
        BatteryInfo info;
        info.isPresent = true;
        info.percentage = ++reads;
        return info;
    }, {.refreshPeriod = 20ms, .wakeRetryInterval = 1h, .wakeRetries = 6});
    service.start();
    ASSERT_TRUE(test::waitUntil([&] { return reads >= 5; }));
    EXPECT_EQ(service.battery().percentage, reads);
}

} // namespace
} // namespace tallowmere
