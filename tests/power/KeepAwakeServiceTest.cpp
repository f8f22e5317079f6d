#include "power/KeepAwakeService.h"

#include "core/PreferenceKeys.h"
#include "core/PreferencesStore.h"

#include "tests/power/KeepAwakeTestSupport.h"
#include "tests/support/TestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;
using namespace std::chrono_literals;

// Countdown, expiry and preferences with time moved by hand and no bus at all, which also
// shows that a machine without a login manager still gets a working switch.
namespace {
struct KeepAwakeServiceTest : ::testing::Test {
    QTemporaryDir dir;
    QString path = dir.path() + QStringLiteral("/preferences.json");
    PreferencesStore store{path};
    std::shared_ptr<test::ManualClock> clock = std::make_shared<test::ManualClock>();

    std::unique_ptr<KeepAwakeService> makeService(PreferencesStore& from)
    {
        return std::make_unique<KeepAwakeService>(from, test::missingBus(), test::missingBus(), clock);
    }
};
} // namespace

TEST_F(KeepAwakeServiceTest, ChoicesPersistWithFallbacks)
{
    test::writeFile(dir.path(), QStringLiteral("preferences.json"),
                    R"({"keepAwakeDuration": "twoHours", "keepAwakeMode": "lid"})");
    PreferencesStore written(path);
    const auto service = makeService(written);
    EXPECT_EQ(service->duration(), KeepAwakeDuration::thirtyMinutes);
    EXPECT_EQ(service->mode(), KeepAwakeMode::displayOn);
    service->setDuration(KeepAwakeDuration::infinite);
    service->setMode(KeepAwakeMode::lidClosed);
    PreferencesStore reread(path);
    const auto next = makeService(reread);
    EXPECT_EQ(next->duration(), KeepAwakeDuration::infinite);
    EXPECT_EQ(next->mode(), KeepAwakeMode::lidClosed);
    EXPECT_EQ(reread.readString(keys::keepAwakeMode).value, QStringLiteral("lidClosed"));
}

TEST_F(KeepAwakeServiceTest, OneHourCountsDownAndEndsItself)
{
    const auto service = makeService(store);
    service->setDuration(KeepAwakeDuration::oneHour);
    service->start();
    EXPECT_EQ(toDateTime(clock->now()).secsTo(*service->expiresAt()), 3600);
    service->setDuration(KeepAwakeDuration::tenMinutes); // waits for the next start
    EXPECT_EQ(service->statusText(), QStringLiteral("Active · 1h 00m left"));
    clock->advance(3s);
    EXPECT_EQ(service->statusText(), QStringLiteral("Active · 59m left"));
    EXPECT_EQ(service->countdownTick(), 3);
    clock->advance(3596s + 999ms);
    EXPECT_EQ(service->statusText(), QStringLiteral("Active · 0s left"));
    EXPECT_TRUE(service->isActive());
    clock->advance(1ms);
    EXPECT_FALSE(service->isActive() || service->expiresAt() || service->statusText());
    EXPECT_EQ(service->countdownTick(), 0);
}

TEST_F(KeepAwakeServiceTest, RestartReplacesTheEarlierTimer)
{
    const auto service = makeService(store);
    service->start();
    clock->advance(10s);
    service->setDuration(KeepAwakeDuration::infinite);
    service->start();
    clock->advance(2h);
    EXPECT_EQ(service->statusText(), QStringLiteral("Active · No limit"));
    EXPECT_EQ(service->countdownTick(), 10); // no ticker without an end

    service->setDuration(KeepAwakeDuration::tenMinutes);
    service->start();
    clock->advance(500s);
    service->start();
    clock->advance(200s);
    EXPECT_TRUE(service->isActive());
    clock->advance(400s);
    EXPECT_FALSE(service->isActive());
}

TEST(KeepAwakeStatus, EndReachedBeforeTheExpiryRan)
{
    const WallTime now{std::chrono::hours(500'000)};
    EXPECT_EQ(keepAwakeStatusText(true, now - 30s, now), QStringLiteral("Active · Ending…"));
}
