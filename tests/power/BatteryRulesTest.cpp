#include "power/BatteryRules.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using battery::combine;
using battery::registryFromProperties;

QVariantMap internalBattery(QVariantMap extra = {})
{
    QVariantMap d{{"Type", "InternalBattery"}, {"Transport Type", "Internal"}, {"Is Present", true}};
    for (auto it = extra.cbegin(); it != extra.cend(); ++it)
        d.insert(it.key(), it.value());
    return d;
}

BatteryInfo withCapacities(int design, int max, std::optional<QString> health = std::nullopt)
{
    BatteryInfo info;
    info.isPresent = true;
    info.designCapacity = design;
    info.maxCapacity = max;
    info.health = std::move(health);
    return info;
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
    EXPECT_FALSE(registryFromProperties(QVariantMap{})->isInstalled);
    // The top-level cycle count wins over the one inside BatteryData.
    EXPECT_EQ(registryFromProperties(QVariantMap{{"CycleCount", 7}, {"BatteryData", QVariantMap{{"CycleCount", 9}}}})
                  ->cycleCount,
              7);
}

TEST(BatteryCombine, WithoutAnyBatteryTheReadingIsNoBattery)
{
    EXPECT_EQ(combine(std::nullopt, std::nullopt), BatteryInfo::noBattery());
    // A desktop on mains: only the overall state is known.
    const BatteryInfo desktop = combine(QList<QVariantMap>{{{"Power Source State", "AC Power"}}, {{"Type", "Line Power"}}},
                                        std::nullopt);
    EXPECT_EQ(desktop, BatteryInfo::noBattery(QString("AC Power")));
    EXPECT_EQ(desktop.healthStatus(), "Unknown");
    EXPECT_FALSE(desktop.timeRemainingText() || desktop.timeToFullText() || desktop.menuBarTimeText());
    // The last state seen wins, and only "AC Power" is kept.
    EXPECT_EQ(combine(QList<QVariantMap>{{{"Power Source State", "AC Power"}}, {{"Power Source State", "Battery Power"}}},
                      std::nullopt),
              BatteryInfo::noBattery());
    // A driver entry saying no battery is installed changes nothing.
    RegistryBatteryHealth notInstalled;
    notInstalled.externalConnected = true;
    EXPECT_EQ(combine(QList<QVariantMap>{}, notInstalled), BatteryInfo::noBattery());
    // An installed battery without the adapter's state runs on battery power.
    notInstalled.isInstalled = true;
    notInstalled.externalConnected.reset();
    EXPECT_EQ(combine(std::nullopt, notInstalled).powerSource, QString("Battery Power"));
}

TEST(BatteryCombine, WalksPastAbsentAndForeignSourcesToTheFirstInternalBattery)
{
    const QList<QVariantMap> list{
        {{"Type", "UPS"}, {"Current Capacity", 99}},
        internalBattery({{"Is Present", false}, {"Current Capacity", 11}}),
        {{"Type", "InternalBattery"}, {"Is Present", QString("no")}, {"Current Capacity", 42}},
        internalBattery({{"Current Capacity", 77}}),
    };
    // "Is Present" that is not a flag counts as present.
    EXPECT_EQ(combine(list, std::nullopt).percentage, 42);
    EXPECT_EQ(combine(list.mid(0, 2) + list.mid(3), std::nullopt).percentage, 77);
    EXPECT_TRUE(battery::isInternalBattery({{"Transport Type", "InternalBattery"}}));
    EXPECT_FALSE(battery::isInternalBattery({{"Type", "Battery"}, {"Transport Type", "USB"}}));
}

TEST(BatteryCombine, DescriptionValuesWinAndTheDriverEntryFillsTheGaps)
{
    RegistryBatteryHealth r;
    r.isInstalled = true;
    r.percentage = 10;
    r.isCharging = true;
    r.isFullyCharged = true;
    r.cycleCount = 300;
    r.designCapacity = 5000;
    r.maxCapacity = 4100;
    r.currentCapacity = 2000;
    r.condition = QString("Fair");
    r.amperage = -900;
    r.voltage = 11000;
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
    BatteryInfo expected{true, 55, true, true, QString("Battery Power"), 135, 0, QString("Good"), 300, 5000, 4100, 2000,
                         -1200, 11000};
    EXPECT_EQ(info, expected);

    // Without a driver entry the capacities stay absent and the condition text comes first.
    const BatteryInfo bare = combine(
        QList<QVariantMap>{internalBattery({{"BatteryHealthCondition", "Check Battery"}, {"BatteryHealth", "Good"}})},
        std::nullopt);
    EXPECT_EQ(bare.health, QString("Check Battery"));
    EXPECT_FALSE(bare.designCapacity || bare.cycleCount || bare.powerSource);
}

TEST(BatteryHealth, CapacityRatioDecidesTheClassification)
{
    struct Case {
        int max;
        std::optional<int> percent;
        const char* status;
        BatteryHealthColor color;
    };
    // 3990 is 79.8 and 3975 is 79.5 (half away from zero); 5100 clamps to 100.
    const Case cases[] = {{4100, 82, "Normal", BatteryHealthColor::green},   {3990, 80, "Normal", BatteryHealthColor::green},
                          {3975, 80, "Normal", BatteryHealthColor::green},   {3970, 79, "Fair", BatteryHealthColor::orange},
                          {2990, 60, "Fair", BatteryHealthColor::orange},    {2970, 59, "Service Recommended", BatteryHealthColor::red},
                          {5100, 100, "Normal", BatteryHealthColor::green},  {-500, 0, "Service Recommended", BatteryHealthColor::red}};
    for (const Case& c : cases) {
        const BatteryInfo info = withCapacities(5000, c.max, QString("Poor"));
        EXPECT_EQ(info.maximumCapacityPercent(), c.percent) << c.max;
        EXPECT_EQ(info.healthStatus(), c.status) << c.max;
        EXPECT_EQ(info.healthColor(), c.color) << c.max;
    }
    EXPECT_EQ(withCapacities(5000, 4750, QString("Permanent Battery Failure")).healthStatus(),
              "Permanent Battery Failure");
    EXPECT_EQ(withCapacities(5000, 4750, QString("Permanent Battery Failure")).healthColor(), BatteryHealthColor::red);
    // A design capacity below 1 gives no ratio; the health text decides.
    EXPECT_EQ(withCapacities(0, 4000).maximumCapacityPercent(), std::nullopt);
    EXPECT_EQ(withCapacities(0, 4000, QString("fair")).healthStatus(), "Fair");
}

TEST(BatteryHealth, HealthTextIsNormalisedWithoutCapacities)
{
    const std::pair<std::optional<QString>, QString> cases[] = {
        {std::nullopt, "Unknown"}, {QString(""), "Unknown"}, {QString("Good"), "Normal"}, {QString("NORMAL"), "Normal"},
        {QString("POOR"), "Service Recommended"}, {QString("Check Battery"), "Unknown"},
        {QString("check battery"), "check battery"}, {QString("Service Recommended"), "Service Recommended"},
        {QString("Overheat"), "Overheat"}};
    for (const auto& [health, expected] : cases) {
        BatteryInfo info;
        info.health = health;
        EXPECT_EQ(info.healthStatus(), expected) << health.value_or("(none)").toStdString();
    }
    BatteryInfo overheat;
    overheat.health = QString("Overheat");
    EXPECT_EQ(overheat.healthColor(), BatteryHealthColor::secondary);
}

TEST(BatteryTexts, TimesAndStatusLine)
{
    BatteryInfo info;
    info.isPresent = true;
    for (const auto& [minutes, text] : std::initializer_list<std::pair<int, const char*>>{
             {-1, nullptr}, {0, nullptr}, {1, "1m"}, {59, "59m"}, {60, "1h 0m"}, {125, "2h 5m"}}) {
        info.timeRemainingMinutes = minutes;
        info.timeToFullChargeMinutes = minutes;
        const auto expected = text ? std::optional<QString>(text) : std::nullopt;
        EXPECT_EQ(info.timeRemainingText(), expected) << minutes;
        EXPECT_EQ(info.timeToFullText(), expected) << minutes;
    }

    info.timeRemainingMinutes = 60;
    info.timeToFullChargeMinutes = 67;
    EXPECT_EQ(info.menuBarTimeText(), QString("1:00"));
    EXPECT_EQ(info.statusLine(), QString::fromUtf8("On Battery \u00b7 1h 0m remaining"));
    info.isCharging = true;
    EXPECT_EQ(info.menuBarTimeText(), QString("1:07"));
    EXPECT_EQ(info.statusLine(), QString::fromUtf8("Charging \u00b7 Full in 1h 7m"));
    info.timeToFullChargeMinutes = -1;
    EXPECT_EQ(info.menuBarTimeText(), std::nullopt);
    EXPECT_EQ(info.statusLine(), "Charging");

    info.isCharging = false;
    info.isFullyCharged = true;
    EXPECT_EQ(info.statusLine(), "Fully Charged");
    info.isFullyCharged.reset();
    info.timeRemainingMinutes.reset();
    EXPECT_EQ(info.statusLine(), "On Battery");
}

} // namespace
} // namespace tallowmere
