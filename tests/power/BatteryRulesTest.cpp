#include "power/BatteryRules.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using battery::combine;

TEST(BatteryCombine, WithoutAnyBatteryTheReadingIsNoBattery)
{
    EXPECT_EQ(combine(std::nullopt, std::nullopt), BatteryInfo::noBattery());
    // A desktop on mains: only the overall state is known, and the last state seen wins.
    EXPECT_EQ(combine(QList<QVariantMap>{{{"Power Source State", "AC Power"}}, {{"Type", "Line Power"}}}, std::nullopt),
              BatteryInfo::noBattery(QString("AC Power")));
    EXPECT_EQ(combine(QList<QVariantMap>{{{"Power Source State", "AC Power"}}, {{"Power Source State", "Battery Power"}}},
                      std::nullopt),
              BatteryInfo::noBattery());
    // A driver entry saying no battery is installed changes nothing; an installed one without
    // the adapter's state runs on battery power.
    RegistryBatteryHealth driver;
    driver.externalConnected = true;
    EXPECT_EQ(combine(QList<QVariantMap>{}, driver), BatteryInfo::noBattery());
    driver.isInstalled = true;
    driver.externalConnected.reset();
    EXPECT_EQ(combine(std::nullopt, driver).powerSource, QString("Battery Power"));
}

TEST(BatteryHealth, CapacityRatioFirstThenTheHealthText)
{
    using C = BatteryHealthColor;
    struct Case {
        int design, max;
        std::optional<QString> health;
        std::optional<int> percent;
        const char* status;
        C color;
    };
    // 3975 is 79.5, rounded half away from zero; a design capacity below 1 gives no ratio, so
    // the text decides, normalised where it is known.
    const Case cases[] = {
        {5000, 4100, "Poor", 82, "Normal", C::green},         {5000, 3975, "Poor", 80, "Normal", C::green},
        {5000, 3970, "Poor", 79, "Fair", C::orange},          {5000, 2990, "Poor", 60, "Fair", C::orange},
        {5000, 2970, "Good", 59, "Service Recommended", C::red},
        {5000, 4750, "Permanent Battery Failure", 95, "Permanent Battery Failure", C::red},
        {0, 4000, "fair", {}, "Fair", C::orange},             {0, 0, {}, {}, "Unknown", C::secondary},
        {0, 0, "", {}, "Unknown", C::secondary},              {0, 0, "Good", {}, "Normal", C::green},
        {0, 0, "POOR", {}, "Service Recommended", C::red},    {0, 0, "Check Battery", {}, "Unknown", C::secondary},
        {0, 0, "check battery", {}, "check battery", C::secondary}, {0, 0, "Overheat", {}, "Overheat", C::secondary},
    };
    for (const Case& c : cases) {
        BatteryInfo info;
        info.isPresent = true;
        info.designCapacity = c.design;
        info.maxCapacity = c.max;
        info.health = c.health;
        const std::string label = std::to_string(c.max) + " " + c.health.value_or("-").toStdString();
        EXPECT_EQ(info.maximumCapacityPercent(), c.percent) << label;
        EXPECT_EQ(info.healthStatus(), c.status) << label;
        EXPECT_EQ(info.healthColor(), c.color) << label;
    }
}

TEST(BatteryTexts, TimesAndStatusLine)
{
    BatteryInfo info;
    info.isPresent = true;
    for (const auto& [minutes, text] : std::initializer_list<std::pair<int, const char*>>{
             {-1, "On Battery"}, {0, "On Battery"}, {59, "On Battery · 59m remaining"},
             {60, "On Battery · 1h 0m remaining"}, {125, "On Battery · 2h 5m remaining"}}) {
        info.timeRemainingMinutes = minutes;
        EXPECT_EQ(info.statusLine(), QString::fromUtf8(text)) << minutes;
    }
    info.timeRemainingMinutes = 60;
    info.timeToFullChargeMinutes = 67;
    EXPECT_EQ(info.menuBarTimeText(), QString("1:00"));
    info.isCharging = true;
    EXPECT_EQ(info.menuBarTimeText(), QString("1:07"));
    EXPECT_EQ(info.statusLine(), QString::fromUtf8("Charging · Full in 1h 7m"));
    info.timeToFullChargeMinutes = -1;
    EXPECT_EQ(info.menuBarTimeText(), std::nullopt);
    EXPECT_EQ(info.statusLine(), "Charging");
    info.isCharging = false;
    info.isFullyCharged = true;
    EXPECT_EQ(info.statusLine(), "Fully Charged");
}

} // namespace
} // namespace tallowmere
