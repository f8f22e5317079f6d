#include "power/BatteryRules.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using battery::combine;
using battery::registryFromProperties;

QVariantMap internalBattery(QVariantMap extra = {})
{
    extra.insert({{"Type", "InternalBattery"}, {"Is Present", extra.value("Is Present", true)}});
    return extra;
}

TEST(BatteryRegistry, ValuesOfTheWrongKindCountAsMissingAndFallbacksApply)
{
    const auto r = registryFromProperties(QVariantMap{
        {"BatteryInstalled", 1},             // a number is a valid flag
        {"CurrentCapacity", QString("80")},  // text is not a number
        {"IsCharging", QString("yes")},      // nor a flag
        {"ExternalConnected", 0.0},
        {"BatteryData", QVariantMap{{"CycleCount", 321}}},
        {"DesignCapacity", 5000.7},          // the integer part of a floating number
        {"AppleRawMaxCapacity", 4100},
        {"AppleRawCurrentCapacity", true},   // a flag is not a number
        {"Condition", "Check Battery"},
        {"BatteryHealth", 42},               // not text: the fallback key wins
        {"InstantAmperage", -1500},
        {"Voltage", qlonglong(1) << 40},     // clamped rather than wrapped
    });
    const RegistryBatteryHealth expected{true, std::nullopt, std::nullopt, std::nullopt, false, 321, 5000, 4100,
                                         std::nullopt, QString("Check Battery"), -1500, std::numeric_limits<int>::max()};
    EXPECT_EQ(r, expected);
    EXPECT_FALSE(registryFromProperties(std::nullopt));
    // The top-level cycle count wins over the one inside BatteryData.
    EXPECT_EQ(registryFromProperties(QVariantMap{{"CycleCount", 7}, {"BatteryData", QVariantMap{{"CycleCount", 9}}}})
                  ->cycleCount,
              7);
}

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

TEST(BatteryCombine, WalksPastAbsentAndForeignSourcesToTheFirstInternalBattery)
{
    const QList<QVariantMap> list{
        {{"Type", "UPS"}, {"Current Capacity", 99}},
        internalBattery({{"Is Present", false}, {"Current Capacity", 11}}),
        internalBattery({{"Is Present", QString("no")}, {"Current Capacity", 42}}),  // not a flag: present
        {{"Transport Type", "Internal"}, {"Is Present", true}, {"Current Capacity", 77}},
    };
    EXPECT_EQ(combine(list, std::nullopt).percentage, 42);
    EXPECT_EQ(combine(list.mid(0, 2) + list.mid(3), std::nullopt).percentage, 77);
}

TEST(BatteryCombine, DescriptionValuesWinAndTheDriverEntryFillsTheGaps)
{
    const RegistryBatteryHealth r{true, 10, true, true, std::nullopt, 300, 5000, 4100, 2000, QString("Fair"), -900, 11000};
    const BatteryInfo info = combine(
        QList<QVariantMap>{internalBattery({{"Current Capacity", 55},
                                            {"Is Charging", QString("true")},  // wrong kind: registry fills
                                            {"Power Source State", "Battery Power"},
                                            {"Time to Empty", 135},
                                            {"Time to Full Charge", 0},
                                            {"BatteryHealthCondition", ""},
                                            {"BatteryHealth", "Good"},
                                            {"Current", -1200},
                                            {"Cycle Count", 1}})},  // never taken from the list
        r);
    EXPECT_EQ(info, (BatteryInfo{true, 55, true, true, QString("Battery Power"), 135, 0, QString("Good"), 300, 5000,
                                 4100, 2000, -1200, 11000}));
    // Without a driver entry the capacities stay absent and the condition text comes first.
    const BatteryInfo bare = combine(
        QList<QVariantMap>{internalBattery({{"BatteryHealthCondition", "Check Battery"}, {"BatteryHealth", "Good"}})},
        std::nullopt);
    EXPECT_EQ(bare.health, QString("Check Battery"));
    EXPECT_FALSE(bare.designCapacity || bare.cycleCount || bare.powerSource);
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
    // 3990 is 79.8 and 3975 is 79.5 (half away from zero); 5100 clamps to 100; a design
    // capacity below 1 gives no ratio, so the text decides, normalised where it is known.
    const Case cases[] = {
        {5000, 4100, "Poor", 82, "Normal", C::green},         {5000, 3975, "Poor", 80, "Normal", C::green},
        {5000, 3970, "Poor", 79, "Fair", C::orange},          {5000, 2990, "Poor", 60, "Fair", C::orange},
        {5000, 2970, "Good", 59, "Service Recommended", C::red}, {5000, 5100, "Poor", 100, "Normal", C::green},
        {5000, -500, {}, 0, "Service Recommended", C::red},
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
