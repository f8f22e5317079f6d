#include "power/KeepAwakeStatus.h"

#include <gtest/gtest.h>

using namespace tallowmere;

TEST(KeepAwakeStatus, CountdownCutsSecondsAndPicksTheUnit)
{
    const std::pair<double, const char*> cases[] = {
        {3900, "1h 05m"}, {3600, "1h 00m"}, {3599.99, "59m"}, {1799.5, "29m"}, {60, "1m"},
        {59.9, "59s"},    {0.4, "0s"},      {7322, "2h 02m"}, {-5, "0s"},
    };
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(countdownText(seconds), QString::fromUtf8(text)) << seconds;
}

TEST(KeepAwakeStatus, TextFollowsStateAndRemainingTime)
{
    const WallTime now = WallTime(std::chrono::hours(500'000));
    using std::chrono::milliseconds, std::chrono::seconds;
    EXPECT_FALSE(keepAwakeStatusText(false, now + seconds(60), now).has_value());
    EXPECT_EQ(keepAwakeStatusText(true, std::nullopt, now), QStringLiteral("Active · No limit"));
    EXPECT_EQ(keepAwakeStatusText(true, now + milliseconds(400), now), QStringLiteral("Active · 0s left"));
    EXPECT_EQ(keepAwakeStatusText(true, now, now), QStringLiteral("Active · Ending…"));
    EXPECT_EQ(keepAwakeStatusText(true, now + seconds(-30), now), QStringLiteral("Active · Ending…"));
    EXPECT_EQ(keepAwakeStatusText(true, now + milliseconds(3'599'000), now), QStringLiteral("Active · 59m left"));
    EXPECT_EQ(keepAwakeStatusText(true, now + seconds(3900), now), QStringLiteral("Active · 1h 05m left"));
}

TEST(KeepAwakeStatus, DurationsAndModesKeepTheirStoredNamesAndPeriods)
{
    EXPECT_EQ(rawName(KeepAwakeDuration::tenMinutes), QLatin1StringView("tenMinutes"));
    EXPECT_EQ(rawName(KeepAwakeDuration::thirtyMinutes), QLatin1StringView("thirtyMinutes"));
    EXPECT_EQ(rawName(KeepAwakeDuration::oneHour), QLatin1StringView("oneHour"));
    EXPECT_EQ(rawName(KeepAwakeDuration::infinite), QLatin1StringView("infinite"));
    EXPECT_EQ(rawName(KeepAwakeMode::displayOn), QLatin1StringView("displayOn"));
    EXPECT_EQ(rawName(KeepAwakeMode::displayOff), QLatin1StringView("displayOff"));
    EXPECT_EQ(rawName(KeepAwakeMode::lidClosed), QLatin1StringView("lidClosed"));

    EXPECT_EQ(periodOf(KeepAwakeDuration::tenMinutes), std::chrono::seconds(600));
    EXPECT_EQ(periodOf(KeepAwakeDuration::thirtyMinutes), std::chrono::seconds(1800));
    EXPECT_EQ(periodOf(KeepAwakeDuration::oneHour), std::chrono::seconds(3600));
    EXPECT_FALSE(periodOf(KeepAwakeDuration::infinite).has_value());
}
