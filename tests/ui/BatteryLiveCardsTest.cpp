#include "power/BatteryMonitoringService.h"
#include "tests/support/ManualScheduler.h"
#include "tests/ui/WindowTestKit.h"
#include "ui/components/InfoRow.h"
#include "ui/components/Theme.h"
#include "ui/live/LiveCards.h"
#include "ui/pages/InventoryPage.h"

#include <QLabel>

#include <algorithm>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using namespace std::chrono_literals;

// The battery page over a service whose readings the test hands in; a new reading is taken
// with the next 15 s refresh.
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
        service.start();  // as the tray strip does
    }
    void read(BatteryInfo info)
    {
        reading = std::move(info);
        scheduler->advance(15s);
    }
    QLabel* label(const char* name) const { return page.findChild<QLabel*>(name); }
    bool shown(const char* name) const { return page.findChild<QWidget*>(name)->isVisibleTo(&page); }
    bool showsText(const char* card, const QString& text) const
    {
        const QList<QLabel*> labels = page.findChild<QWidget*>(card)->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](QLabel* l) { return l->text() == text && l->isVisibleTo(&page); });
    }
    QString row(const char* card, const char* label) const
    {
        const auto* line = page.findChild<QWidget*>(card)->findChild<InfoRow*>(QStringLiteral("row:") + label);
        return line ? line->shownValue() : QStringLiteral("(none)");
    }
};

BatteryInfo laptop(int maxCapacity)
{
    BatteryInfo b;
    b.isPresent = true;
    b.percentage = 57;
    b.isCharging = false;
    b.powerSource = QStringLiteral("Battery Power");
    b.timeRemainingMinutes = 65;
    b.cycleCount = 312;
    b.designCapacity = 5000;
    b.maxCapacity = maxCapacity;
    b.voltage = 11870;
    return b;
}

TEST_F(BatteryPage, WithoutABatterySaysWhichCaseApplies)
{
    EXPECT_EQ(label("noBattery")->text(), "No battery detected");
    EXPECT_FALSE(shown("noBatteryNote"));
    EXPECT_FALSE(shown("card:Battery Health"));
    EXPECT_FALSE(shown("card:Battery Details"));

    read(BatteryInfo::noBattery(QStringLiteral("AC Power")));
    EXPECT_EQ(label("noBattery")->text(), "On AC power — no battery detected");
    EXPECT_TRUE(shown("noBatteryNote"));
    EXPECT_EQ(label("noBatteryNote")->text(), "This computer is connected to AC power and has no internal battery.");
    EXPECT_FALSE(shown("batteryCharge"));
}

TEST_F(BatteryPage, ShowsChargeStateAndFiguresOfAReading)
{
    read(laptop(4100));
    EXPECT_FALSE(shown("noBattery"));
    EXPECT_EQ(label("batteryCharge")->text(), "57%");
    EXPECT_EQ(label("batteryState")->text(), "On Battery · 1h 5m remaining");
    EXPECT_EQ(label("batteryLevel")->accessibleName(), "battery.50percent");
    EXPECT_EQ(row("card:Battery Health", "Maximum capacity"), "82%");
    EXPECT_EQ(row("card:Battery Health", "Capacity (Max / Design)"), "4100 / 5000 mAh");
    EXPECT_EQ(row("card:Battery Health", "Cycle count"), "312 cycles");
    EXPECT_TRUE(label("healthNote")->text().startsWith("Live estimate from current battery data."));
    EXPECT_EQ(row("card:Battery Details", "Time Remaining"), "1h 5m");
    EXPECT_EQ(row("card:Battery Details", "Time to Full Charge"), "(none)") << "not while discharging";
    EXPECT_EQ(row("card:Battery Details", "AC Power"), "No");
    EXPECT_EQ(row("card:Battery Details", "Voltage"), "11.87 V");

    BatteryInfo bare;  // present, but the driver tells nothing
    bare.isPresent = true;
    read(bare);
    EXPECT_FALSE(shown("healthWord"));
    EXPECT_TRUE(showsText("card:Battery Health", "Battery health unavailable"));
    EXPECT_TRUE(showsText("card:Battery Details", "No battery information available"));
    EXPECT_EQ(row("card:Battery Details", "Time Remaining"), "(none)");
}

TEST_F(BatteryPage, HealthWordFollowsTheCapacityThresholds)
{
    const struct {
        int maxCapacity;
        std::optional<QString> condition;
        const char* word;
        const char* mark;
    } cases[] = {
        {4000, {}, "Normal", "checkmark.seal.fill"},  // 80 %
        {3950, {}, "Fair", "exclamationmark.triangle"},  // 79 %
        {2950, {}, "Service Recommended", "exclamationmark.triangle"},  // 59 %
        {4750, QStringLiteral("Permanent Battery Failure"), "Permanent Battery Failure", "exclamationmark.triangle"},
    };
    for (const auto& c : cases) {
        BatteryInfo b = laptop(c.maxCapacity);
        b.health = c.condition;
        read(b);
        EXPECT_EQ(label("healthWord")->text(), c.word) << c.maxCapacity;
        EXPECT_EQ(label("healthMark")->accessibleName(), c.mark) << c.maxCapacity;
    }
}

TEST_F(BatteryPage, StaysLiveOnScreenAlsoWhenNothingElseStartedTheService)
{
    service.stop();  // the tray strip is off
    reading = laptop(4100);
    window.show();
    EXPECT_TRUE(service.isRunning());
    EXPECT_EQ(label("batteryCharge")->text(), "57%") << "read when the page came on screen";
    window.hide();
    EXPECT_FALSE(service.isRunning());

    service.start();
    window.show();
    window.hide();
    EXPECT_TRUE(service.isRunning()) << "hiding the page leaves the strip's readings alone";
}

} // namespace
} // namespace tallowmere
