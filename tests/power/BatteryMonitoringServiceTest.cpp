#include "power/BatteryMonitoringService.h"

#include "tests/support/ManualScheduler.h"
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

// A refresh period long enough that only the events under test cause readings.
const BatteryMonitoringService::Timing quietTiming{.refreshPeriod = 1h};

class BatteryService : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(bus.isUp() && bus.startTemplate(QStringLiteral("logind"), logind));
        witness.start();
    }

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
    // Sends a wake and returns once a second service on the same connection has read for it.
    // Signals reach every listener in the order they were sent, so every earlier signal has
    // been handled by then: a test knows that nothing more is coming without waiting for it.
    void wakeAndDrain()
    {
        const int before = witnessReads;
        emitPrepareForSleep(false);
        ASSERT_TRUE(test::waitUntil([&] { return witnessReads > before; }));
    }

    test::PrivateBus bus;
    std::shared_ptr<test::ManualScheduler> scheduler = std::make_shared<test::ManualScheduler>();
    int witnessReads = 0;
    BatteryMonitoringService witness{bus.connection(), [this] {
                                         ++witnessReads;
                                         return BatteryInfo::noBattery();
                                     }, quietTiming, scheduler};
};

TEST_F(BatteryService, FollowsUPowerChangesWhileStartedOnly)
{
    ASSERT_TRUE(bus.startTemplate(QStringLiteral("upower"), upower));
    const QDBusConnection connection = bus.connection();
    BatteryMonitoringService service(connection, [connection] { return BatteryInfo::current(connection, "/none"); },
                                     quietTiming, scheduler);
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
    wakeAndDrain();
    EXPECT_EQ(service.battery().percentage, 41);  // the last value is kept
    EXPECT_EQ(changed.count(), 2);
    service.start();  // starting again reads at once
    EXPECT_EQ(service.battery().percentage, 12);
}

TEST_F(BatteryService, WakeBringsSixRetriesFiveSecondsApartAndASecondWakeRestartsThem)
{
    int reads = 0;
    BatteryMonitoringService service(bus.connection(), [&reads] {
        ++reads;
        return BatteryInfo::noBattery();
    }, quietTiming, scheduler);
    service.start();
    emitPrepareForSleep(true);  // going to sleep is not a wake
    wakeAndDrain();
    EXPECT_EQ(reads, 3);  // at construction, at start, at the wake
    ASSERT_TRUE(service.isRetryingAfterWake());

    scheduler->advance(4999ms);
    EXPECT_EQ(reads, 3);
    scheduler->advance(1ms);
    EXPECT_EQ(reads, 4);
    scheduler->advance(5s);
    EXPECT_EQ(reads, 5);

    wakeAndDrain();  // a second wake, 10 s into the first burst
    EXPECT_EQ(reads, 6);
    scheduler->advance(4999ms);
    EXPECT_EQ(reads, 6) << "the first burst's next retry is gone";
    scheduler->advance(1h);
    EXPECT_EQ(reads, 6 + 6 + 1);  // six retries, and the hourly refresh
    EXPECT_FALSE(service.isRetryingAfterWake());

    // A burst under way ends with stop().
    wakeAndDrain();
    service.stop();
    EXPECT_FALSE(service.isRetryingAfterWake());
    const int atStop = reads;
    scheduler->advance(2h);
    EXPECT_EQ(reads, atStop);
}

TEST_F(BatteryService, RetriesEndOnceATimeEstimateAppears)
{
    int reads = 0;
    BatteryMonitoringService service(bus.connection(), [&reads] {
        BatteryInfo info;
        info.isPresent = true;
        info.timeRemainingMinutes = ++reads >= 5 ? 90 : -1;  // with the second retry
        return info;
    }, quietTiming, scheduler);
    service.start();
    QSignalSpy changed(&service, &BatteryMonitoringService::batteryChanged);
    emitPrepareForSleep(false);
    ASSERT_TRUE(test::waitUntil([&] { return service.isRetryingAfterWake(); }));
    scheduler->advance(10s);
    EXPECT_EQ(reads, 5);
    EXPECT_FALSE(service.isRetryingAfterWake());
    EXPECT_EQ(changed.count(), 1);  // equal readings before the estimate were dropped
}

TEST(BatteryServicePeriodic, RefreshesEveryFifteenSecondsWithoutAnyBus)
{
    auto scheduler = std::make_shared<test::ManualScheduler>();
    int reads = 0;
    BatteryMonitoringService service(QDBusConnection(QStringLiteral("no-bus")), [&reads] {
        BatteryInfo info;
        info.isPresent = true;
        info.percentage = ++reads;
        return info;
    }, {}, scheduler);
    service.start();
    scheduler->advance(14999ms);
    EXPECT_EQ(reads, 2);
    scheduler->advance(1ms);
    EXPECT_EQ(reads, 3);
    scheduler->advance(15s);
    EXPECT_EQ(service.battery().percentage, 4);
    service.stop();
    EXPECT_EQ(scheduler->pending(), 0u);
}

} // namespace
} // namespace tallowmere
