#include "power/BatteryInfo.h"
#include "tests/support/TestSupport.h"
#include "tests/ui/TrayTestKit.h"
#include "ui/components/HoverButton.h"
#include "ui/components/SectionLabel.h"
#include "ui/components/Switch.h"
#include "ui/popover/AudioSection.h"
#include "ui/popover/MenuBarStatsPopover.h"
#include "ui/popover/PopoverCard.h"
#include "ui/popover/PopoverTexts.h"

#include <QLabel>
#include <QLocale>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

BatteryInfo battery(std::optional<bool> charging, std::optional<int> toFull, std::optional<int> remaining)
{
    BatteryInfo b;
    b.isPresent = true;
    b.percentage = 81;
    b.isCharging = charging;
    b.timeToFullChargeMinutes = toFull;
    b.timeRemainingMinutes = remaining;
    return b;
}

QStringList visibleTexts(const QWidget& root)
{
    QStringList texts;
    for (const QLabel* label : root.findChildren<QLabel*>())
        if (label->isVisibleTo(&root) && !label->text().isEmpty())
            texts << label->text();
    for (const SectionLabel* section : root.findChildren<SectionLabel*>())
        texts << section->title();
    for (const HoverButton* button : root.findChildren<HoverButton*>())
        texts << button->text();
    return texts;
}

} // namespace

TEST(PopoverTexts, FiguresInTheCLocale)
{
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(percentHeadline(37.5), "38%");
    EXPECT_EQ(cpuDetail(12.4, 5.6), "User 12% \u00B7 System 6%");
    EXPECT_EQ(usedFreeDetail(5.24, 10.44), "5.2 GB used \u00B7 10.4 GB free");
    EXPECT_EQ(networkPeak({100, 2048}, {4096, 0}), "Peak 4.0 KB/s");
    EXPECT_EQ(networkSession(1536, 0), "Session 1.5 KB / 0 B");
    EXPECT_EQ(volumeText(0.4), "40%");
    QLocale::setDefault(QLocale::c());
}

TEST(PopoverTexts, DurationsAndWakeTimes)
{
    EXPECT_EQ(durationText(45), "45m");
    EXPECT_EQ(durationText(60), "1:00");
    EXPECT_EQ(durationText(65), "1:05");
    EXPECT_EQ(wakeTimeText(0, 0), "12:00 AM");
    EXPECT_EQ(wakeTimeText(12, 30), "12:30 PM");
    EXPECT_EQ(wakeTimeText(19, 45), "7:45 PM");
    EXPECT_EQ(wakeClockText(7, 5), "7:05");
}

TEST(PopoverTexts, BatteryStatusLine)
{
    auto state = [](const BatteryInfo& b) { return batteryStatusLine(b).split(QStringLiteral(" \u00B7 ")); };
    EXPECT_EQ(state(battery(true, std::nullopt, std::nullopt)).first(), "Charging");
    EXPECT_TRUE(batteryStatusLine(battery(true, 45, std::nullopt)).startsWith(u"Charging \u00B7 Full in 45m"));
    EXPECT_TRUE(batteryStatusLine(battery(false, std::nullopt, 59)).startsWith(u"0:59 remaining"));
    BatteryInfo full = battery(false, std::nullopt, std::nullopt);
    full.isFullyCharged = true;
    EXPECT_EQ(state(full).first(), "Fully Charged");
    EXPECT_EQ(state(battery(std::nullopt, std::nullopt, std::nullopt)).first(), "On Battery");
    BatteryInfo ac = battery(false, std::nullopt, 0);
    ac.powerSource = QStringLiteral("AC Power");
    EXPECT_EQ(state(ac).first(), "AC Power");

    BatteryInfo worn = battery(false, std::nullopt, 59);
    worn.cycleCount = 500;
    worn.designCapacity = 5000;
    worn.maxCapacity = 4500;
    EXPECT_EQ(batteryStatusLine(worn), "0:59 remaining \u00B7 500 cycles \u00B7 Normal");

    EXPECT_EQ(batteryIconName(battery(true, 45, std::nullopt)), "battery.100percent.bolt");
    BatteryInfo low = battery(false, std::nullopt, 10);
    low.percentage = 3;
    EXPECT_EQ(batteryIconName(low), "battery.25percent");
    low.percentage = 70;
    EXPECT_EQ(batteryIconName(low), "battery.75percent");
}

class PopoverTest : public ::testing::Test {
protected:
    template <class T>
    T* child(const char* name) const
    {
        T* found = popover->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    test::TrayTestKit kit;
    std::unique_ptr<MenuBarStatsPopover> popover;
};

TEST_F(PopoverTest, SectionsInOrderWithEmptyStates)
{
    popover = std::make_unique<MenuBarStatsPopover>(kit.services());
    kit.cpu.monitor().sample();
    popover->show();
    EXPECT_EQ(popover->size(), QSize(360, 820));
    const QStringList texts = visibleTexts(*popover);
    for (const char* expected : {"System", "CPU", "Memory", "Disk", "Network", "Wi-Fi", "Audio \u00B7 Per-app volume",
                                 "No apps playing audio", "Sleep & Wake", "Sleep Now", "Wake schedule",
                                 "Repeats every day", "Keep Awake", "Prevent sleep for a set duration",
                                 "Keep display on", "Keep display off", "Lid closed", "10m", "30m", "1h", "\u221E",
                                 "Open Tallowmere", "Quit"})
        EXPECT_TRUE(texts.contains(QString::fromUtf8(expected))) << expected;
    // Without a battery there is no card.
    for (PopoverCard* card : popover->findChildren<PopoverCard*>())
        EXPECT_FALSE(card->accessibleName() == u"Battery" && card->isVisible());

    int opened = 0;
    int quit = 0;
    popover->onOpenApp = [&] { ++opened; };
    popover->onQuit = [&] { ++quit; };
    child<HoverButton>("openApp")->click();
    child<HoverButton>("quit")->click();
    EXPECT_EQ(std::pair(opened, quit), std::pair(1, 1));
}

TEST_F(PopoverTest, BatteryCardShowsChargeAndStatus)
{
    kit.batteryReading = battery(false, std::nullopt, 125);
    kit.battery.start();
    popover = std::make_unique<MenuBarStatsPopover>(kit.services());
    popover->show();
    ASSERT_TRUE(test::waitUntil([&] { return kit.battery.battery().isPresent; }));
    PopoverCard* card = nullptr;
    for (PopoverCard* c : popover->findChildren<PopoverCard*>())
        if (c->accessibleName() == u"Battery")
            card = c;
    ASSERT_NE(card, nullptr);
    EXPECT_TRUE(test::waitUntil([&] { return card->isVisible(); }));
    EXPECT_EQ(card->headline(), "81%");
    EXPECT_TRUE(card->detail().startsWith(u"2:05 remaining"));
    kit.battery.stop();
}

TEST_F(PopoverTest, MixerRowsReachTheVolumeHooksAndPollOnlyOnScreen)
{
    kit.sessions = {{.id = QStringLiteral("org.example.Player"), .name = QStringLiteral("Player"), .subtitle = {}, .volume = 100},
                    {.id = QStringLiteral("firefox"), .name = QStringLiteral("Firefox"), .subtitle = {}, .volume = 40, .isMuted = true}};
    popover = std::make_unique<MenuBarStatsPopover>(kit.services());
    EXPECT_EQ(kit.audioStarts, 0);
    popover->show();
    EXPECT_EQ(kit.audioStarts, 1);

    auto* audio = child<AudioSection>("audio");
    ASSERT_EQ(audio->rows().size(), 2);
    EXPECT_FALSE(audio->showsEmptyState());
    AudioAppRow* firefox = audio->rows()[1];
    EXPECT_TRUE(visibleTexts(*firefox).contains(QStringLiteral("40%")));
    firefox->findChild<VolumeSlider*>()->setValue(250);
    ASSERT_EQ(kit.volumes.size(), 1);
    EXPECT_EQ(kit.volumes[0].first, "firefox");
    EXPECT_DOUBLE_EQ(kit.volumes[0].second, 25);
    firefox->findChild<QToolButton*>()->click();
    EXPECT_EQ(kit.mutes, QStringList{"firefox"});

    // The list shrinks to nothing: the rows go and the empty text comes back.
    kit.sessions.clear();
    kit.sessionsChanged();
    EXPECT_TRUE(audio->showsEmptyState());
    EXPECT_TRUE(child<QLabel>("audio.empty")->isVisible());

    popover->hide();
    EXPECT_EQ(kit.audioStops, 1);
}

TEST_F(PopoverTest, KeepAwakeAndWakeControlsReachTheirServices)
{
    popover = std::make_unique<MenuBarStatsPopover>(kit.services());
    popover->show();

    // A mode picked while off is stored without starting; a duration chip starts.
    child<HoverButton>("mode.lidClosed")->click();
    EXPECT_EQ(kit.keepAwake.mode(), KeepAwakeMode::lidClosed);
    EXPECT_FALSE(kit.keepAwake.isActive());
    child<HoverButton>("duration.oneHour")->click();
    EXPECT_EQ(kit.keepAwake.duration(), KeepAwakeDuration::oneHour);
    EXPECT_TRUE(kit.keepAwake.isActive());
    EXPECT_TRUE(child<Switch>("keepAwakeSwitch")->isChecked());
    EXPECT_FALSE(child<QLabel>("keepAwakeStatus")->text().isEmpty());
    child<Switch>("keepAwakeSwitch")->click();
    EXPECT_FALSE(kit.keepAwake.isActive());

    child<Switch>("wakeSwitch")->click();
    EXPECT_TRUE(kit.power.wakeEnabled());
    const int hour = kit.power.wakeHour();
    child<QToolButton>("Hour up")->click();
    EXPECT_EQ(kit.power.wakeHour(), (hour + 1) % 24);
    EXPECT_EQ(child<QLabel>("wakeTime")->text(), wakeTimeText(kit.power.wakeHour(), kit.power.wakeMinute()));
    child<HoverButton>("meridiem")->click();
    EXPECT_EQ(kit.power.wakeHour(), (hour + 13) % 24);
    kit.power.waitForCommands();
    EXPECT_FALSE(kit.commands().isEmpty());
    // The password dialog was dismissed, so the row must say the wake is not in place.
    EXPECT_FALSE(kit.power.wakeInstalled());
    ASSERT_FALSE(kit.power.wakeProblem().isEmpty());
    EXPECT_EQ(child<QLabel>("wakeProblem")->text(), kit.power.wakeProblem());
    EXPECT_FALSE(child<QLabel>("wakeProblem")->isHidden());
    EXPECT_FALSE(child<HoverButton>("wakeRetry")->isHidden());

    child<HoverButton>("sleepNow")->click();
    kit.power.waitForCommands();
    EXPECT_TRUE(kit.commands().last().contains(u"suspend"));
}
