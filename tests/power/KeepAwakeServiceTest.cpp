#include "power/KeepAwakeService.h"

#include "app/settings/PreferenceKeys.h"
#include "app/settings/PreferencesStore.h"

#include "tests/power/KeepAwakeTestSupport.h"
#include "tests/support/TestSupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;
using namespace std::chrono_literals;

// The countdown, expiry and preferences, with time moved by hand and no bus at all, which
// also shows that a machine without a login manager still gets a working switch.
namespace {
struct KeepAwakeServiceTest : ::testing::Test {
    QTemporaryDir dir;
    std::shared_ptr<test::ManualClock> clock = std::make_shared<test::ManualClock>();

    QString path() const { return dir.path() + QStringLiteral("/preferences.json"); }
    std::unique_ptr<KeepAwakeService> makeService(PreferencesStore& store)
    {
        return std::make_unique<KeepAwakeService>(store, test::missingBus(), test::missingBus(), clock);
    }
};
} // namespace

TEST_F(KeepAwakeServiceTest, StoredChoicesFallBackToDefaults)
{
    const std::tuple<QByteArray, KeepAwakeDuration, KeepAwakeMode> cases[] = {
        {"{}", KeepAwakeDuration::thirtyMinutes, KeepAwakeMode::displayOn},
        {R"({"keepAwakeDuration": "twoHours", "keepAwakeMode": "lid"})", KeepAwakeDuration::thirtyMinutes,
         KeepAwakeMode::displayOn},
        {R"({"keepAwakeDuration": 3600, "keepAwakeMode": true})", KeepAwakeDuration::thirtyMinutes,
         KeepAwakeMode::displayOn},
        {R"({"keepAwakeDuration": "infinite", "keepAwakeMode": "lidClosed"})", KeepAwakeDuration::infinite,
         KeepAwakeMode::lidClosed},
        {R"({"keepAwakeDuration": "tenMinutes", "keepAwakeMode": "displayOff"})", KeepAwakeDuration::tenMinutes,
         KeepAwakeMode::displayOff},
    };
    for (const auto& [json, duration, mode] : cases) {
        test::writeFile(dir.path(), QStringLiteral("preferences.json"), json);
        PreferencesStore store(path());
        const auto service = makeService(store);
        EXPECT_EQ(service->duration(), duration) << json.constData();
        EXPECT_EQ(service->mode(), mode) << json.constData();
        EXPECT_FALSE(service->isActive());
    }
}

TEST_F(KeepAwakeServiceTest, ChoicesAreWrittenAtOnceAndDoNotTouchARunningSession)
{
    PreferencesStore store(path());
    const auto service = makeService(store);
    service->start();
    const auto expiresAt = service->expiresAt();

    QSignalSpy durationSpy(service.get(), &KeepAwakeService::durationChanged);
    service->setDuration(KeepAwakeDuration::oneHour);
    service->setMode(KeepAwakeMode::lidClosed);
    service->setMode(KeepAwakeMode::lidClosed);
    EXPECT_EQ(durationSpy.count(), 1);
    EXPECT_EQ(service->expiresAt(), expiresAt);

    PreferencesStore reread(path());
    EXPECT_EQ(reread.readString(keys::keepAwakeDuration).value, QStringLiteral("oneHour"));
    EXPECT_EQ(reread.readString(keys::keepAwakeMode).value, QStringLiteral("lidClosed"));
    // Only the choices persist: the next launch starts inactive.
    const auto next = makeService(reread);
    EXPECT_FALSE(next->isActive());
    EXPECT_EQ(next->duration(), KeepAwakeDuration::oneHour);
}

TEST_F(KeepAwakeServiceTest, OneHourCountsDownAndEndsItself)
{
    PreferencesStore store(path());
    const auto service = makeService(store);
    service->setDuration(KeepAwakeDuration::oneHour);
    QSignalSpy ticks(service.get(), &KeepAwakeService::countdownTickChanged);

    service->start();
    EXPECT_TRUE(service->isActive());
    ASSERT_TRUE(service->expiresAt().has_value());
    EXPECT_EQ(toDateTime(clock->now()).secsTo(*service->expiresAt()), 3600);
    // Without a bus no lock is held, yet the session runs.
    EXPECT_EQ(service->systemAssertionID(), 0u);
    EXPECT_EQ(service->displayAssertionID(), 0u);

    clock->advance(1ms);
    EXPECT_EQ(service->statusText(), QStringLiteral("Active · 59m left"));
    clock->advance(3s);
    EXPECT_EQ(service->countdownTick(), 3);
    EXPECT_EQ(ticks.count(), 3);

    clock->advance(3600s - 3s - 2ms);
    EXPECT_TRUE(service->isActive());
    EXPECT_EQ(service->statusText(), QStringLiteral("Active · 0s left"));
    clock->advance(1ms);
    EXPECT_FALSE(service->isActive());
    EXPECT_FALSE(service->expiresAt().has_value());
    EXPECT_EQ(service->countdownTick(), 0);
    EXPECT_FALSE(service->statusText().has_value());
    EXPECT_EQ(clock->pendingSleeps(), 0);
}

TEST_F(KeepAwakeServiceTest, SwitchingToNoLimitOutlivesTheEarlierTimer)
{
    PreferencesStore store(path());
    const auto service = makeService(store);
    service->start();
    clock->advance(10s);
    service->setDuration(KeepAwakeDuration::infinite);
    service->start();
    EXPECT_FALSE(service->expiresAt().has_value());
    EXPECT_EQ(service->countdownTick(), 10);

    clock->advance(2h);
    EXPECT_TRUE(service->isActive());
    EXPECT_EQ(service->statusText(), QStringLiteral("Active · No limit"));
    // No ticker runs for a session without end.
    EXPECT_EQ(service->countdownTick(), 10);
    EXPECT_EQ(clock->pendingSleeps(), 0);

    service->stop();
    EXPECT_EQ(service->countdownTick(), 0);
}

TEST_F(KeepAwakeServiceTest, StartingAgainRestartsThePeriod)
{
    PreferencesStore store(path());
    const auto service = makeService(store);
    service->setDuration(KeepAwakeDuration::tenMinutes);
    service->start();
    clock->advance(500s);
    service->start();
    EXPECT_EQ(toDateTime(clock->now()).secsTo(*service->expiresAt()), 600);

    clock->advance(200s); // past the first session's end
    EXPECT_TRUE(service->isActive());
    clock->advance(400s);
    EXPECT_FALSE(service->isActive());
}

TEST_F(KeepAwakeServiceTest, StopWhileInactiveAnnouncesNothing)
{
    PreferencesStore store(path());
    const auto service = makeService(store);
    QSignalSpy active(service.get(), &KeepAwakeService::isActiveChanged);
    QSignalSpy expires(service.get(), &KeepAwakeService::expiresAtChanged);
    QSignalSpy ticks(service.get(), &KeepAwakeService::countdownTickChanged);
    service->stop();
    EXPECT_EQ(active.count() + expires.count() + ticks.count(), 0);
}

TEST_F(KeepAwakeServiceTest, RealClockRaisesTheTickEverySecond)
{
    PreferencesStore store(path());
    KeepAwakeService service(store, test::missingBus(), test::missingBus());
    service.start();
    EXPECT_EQ(service.statusText(), QStringLiteral("Active · 29m left"));
    EXPECT_TRUE(test::waitUntil([&] { return service.countdownTick() >= 2; }, 5000));
    service.stop();
    EXPECT_EQ(service.countdownTick(), 0);
}
