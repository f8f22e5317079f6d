#include "power/BatteryMonitoringService.h"
#include "tests/ui/WindowTestKit.h"
#include "ui/components/InfoRow.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// The battery page over a service whose readings the test hands in, started as the tray strip
// starts it; a new reading is taken with the next 15 s refresh.
struct BatteryPage : ::testing::Test {
    BatteryInfo reading = BatteryInfo::noBattery();
    std::shared_ptr<test::ManualScheduler> scheduler = std::make_shared<test::ManualScheduler>();
    BatteryMonitoringService service{QDBusConnection(QStringLiteral("no-bus")), [this] { return reading; }, {}, scheduler};
    test::WindowTestKit kit;
    QWidget window;
    InventoryPage& page = *new InventoryPage(Theme::darkTheme(), makeSpecPage(SpecCategory::battery, kit.inputs), &window);

    void SetUp() override
    {
        WindowServices services = kit.services();
        services.battery = &service;
        addLiveCards(Theme::darkTheme(), services, SpecCategory::battery, page);
        service.start();
    }
    void read(BatteryInfo info)
    {
        reading = std::move(info);
        scheduler->advance(std::chrono::seconds(15));
    }
    QString text(const char* name) const { return page.findChild<QLabel*>(name)->text(); }
    bool shown(const char* name) const { return page.findChild<QWidget*>(name)->isVisibleTo(&page); }
    QString row(const char* label) const
    {
        const auto* line = page.findChild<InfoRow*>(QStringLiteral("row:") + label);
        return line ? line->shownValue() : QStringLiteral("(none)");
    }
};

BatteryInfo laptop(int maxCapacity)
{
    BatteryInfo b;
    b.isPresent = true;
    b.percentage = 57;
    b.timeRemainingMinutes = 65;
    b.designCapacity = 5000;
    b.maxCapacity = maxCapacity;
    return b;
}

TEST_F(BatteryPage, WithoutABatterySaysWhichCaseApplies)
{
    EXPECT_EQ(text("noBattery"), "No battery detected");
    EXPECT_FALSE(shown("noBatteryNote"));
    EXPECT_FALSE(shown("card:Battery Health"));

    read(BatteryInfo::noBattery(QStringLiteral("AC Power")));
    EXPECT_EQ(text("noBattery"), "On AC power — no battery detected");
    EXPECT_EQ(text("noBatteryNote"), "This computer is connected to AC power and has no internal battery.");
    EXPECT_TRUE(shown("noBatteryNote"));
    EXPECT_FALSE(shown("batteryCharge"));
}

TEST_F(BatteryPage, ShowsChargeStateAndFiguresOfAReading)
{
    read(laptop(4100));
    EXPECT_FALSE(shown("noBattery"));
    EXPECT_EQ(text("batteryCharge"), "57%");
    EXPECT_EQ(text("batteryState"), "On Battery · 1h 5m remaining");
    EXPECT_EQ(page.findChild<QLabel*>("batteryLevel")->accessibleName(), "battery.50percent");
    EXPECT_EQ(row("Maximum capacity"), "82%");
    EXPECT_EQ(row("Capacity (Max / Design)"), "4100 / 5000 mAh");
    EXPECT_EQ(row("Time Remaining"), "1h 5m");
    EXPECT_EQ(row("Time to Full Charge"), "(none)") << "not while discharging";

    BatteryInfo bare;  // present, and the driver tells nothing more
    bare.isPresent = true;
    read(bare);
    EXPECT_FALSE(shown("healthWord"));
    EXPECT_EQ(row("Time Remaining"), "(none)");
    for (const QString message : {"Battery health unavailable", "No battery information available"}) {
        const QList<QLabel*> labels = page.findChildren<QLabel*>();
        EXPECT_TRUE(std::any_of(labels.begin(), labels.end(),
                                [&](QLabel* l) { return l->text() == message && l->isVisibleTo(&page); }))
            << message.toStdString();
    }
}

TEST_F(BatteryPage, HealthWordFollowsTheCapacityThresholds)
{
    const std::pair<int, const char*> cases[] = {{4000, "Normal"}, {3950, "Fair"}, {2950, "Service Recommended"}};
    for (const auto& [maxCapacity, word] : cases) {  // 80, 79 and 59 % of the design
        read(laptop(maxCapacity));
        EXPECT_EQ(text("healthWord"), word) << maxCapacity;
        EXPECT_EQ(page.findChild<QLabel*>("healthMark")->accessibleName(),
                  maxCapacity == 4000 ? "checkmark.seal.fill" : "exclamationmark.triangle");
    }
}

TEST_F(BatteryPage, StaysLiveOnScreenAlsoWhenNothingElseStartedTheService)
{
    service.stop();  // the tray strip is off
    reading = laptop(4100);
    window.show();
    EXPECT_TRUE(service.isRunning());
    EXPECT_EQ(text("batteryCharge"), "57%") << "read when the page came on screen";
    window.hide();
    EXPECT_FALSE(service.isRunning());

    service.start();
    window.show();
    window.hide();
    EXPECT_TRUE(service.isRunning()) << "hiding the page leaves the strip's readings alone";
}

} // namespace
} // namespace tallowmere
