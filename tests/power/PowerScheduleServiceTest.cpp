#include "power/PowerScheduleService.h"

#include "core/PreferenceKeys.h"
#include "core/PreferencesStore.h"

#include "tests/support/TestSupport.h"

#include <QFile>
#include <QMutex>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

const std::string reload = "systemctl --user daemon-reload\n";
const std::string enable = "systemctl --user enable --now tallowmere-wake.timer\n";
const std::string disable = "systemctl --user disable --now tallowmere-wake.timer\n";

// Records the commands instead of running them; the service calls from its own thread.
struct PowerScheduleTest : ::testing::Test {
    QTemporaryDir dir;
    QString prefsPath = dir.path() + QStringLiteral("/preferences.json");
    QString timerPath = dir.path() + QStringLiteral("/units/tallowmere-wake.timer");
    QMutex mutex;
    std::string commands;

    std::unique_ptr<PreferencesStore> store;
    std::unique_ptr<PowerScheduleService> service;

    void open()
    {
        store = std::make_unique<PreferencesStore>(prefsPath);
        service = std::make_unique<PowerScheduleService>(*store, [this](const QString& program, const QStringList& arguments) {
            QMutexLocker lock(&mutex);
            commands += (QStringList{program} + arguments).join(u' ').toStdString() + '\n';
            return 1; // a failing command changes nothing
        }, dir.path() + QStringLiteral("/units"));
    }
    std::string take()
    {
        service->waitForCommands();
        QMutexLocker lock(&mutex);
        return std::exchange(commands, {});
    }
    QString time() const { return QString::asprintf("%d:%d", service->wakeHour(), service->wakeMinute()); }
    QString stored()
    {
        PreferencesStore reread(prefsPath);
        return QString::asprintf("%d %lld:%lld", reread.readBool(keys::wakeScheduleEnabled).value,
                                 reread.readInteger(keys::wakeScheduleHour).value,
                                 reread.readInteger(keys::wakeScheduleMinute).value);
    }
};

} // namespace

TEST_F(PowerScheduleTest, CreationReadsWithoutWritingOrRunning)
{
    const QByteArray json = R"({"wakeScheduleEnabled": true, "wakeScheduleHour": 31, "wakeScheduleMinute": 50})";
    test::writeFile(dir.path(), QStringLiteral("preferences.json"), json);
    open();
    // The hour is taken as stored; the minute is cut down to a quarter.
    EXPECT_EQ(time(), QStringLiteral("31:45"));
    EXPECT_EQ(take(), "");
    EXPECT_EQ(test::readFile(prefsPath), json);
}

TEST_F(PowerScheduleTest, CorrectedValuesAreStoredAndAppliedOnce)
{
    open();
    const std::tuple<bool, int, const char*> cases[] = {
        {true, 25, "0 23:30"}, {true, -3, "0 0:30"}, {false, 44, "0 0:30"},
        {false, 59, "0 0:45"}, {false, 7, "0 0:0"},  {false, -20, "0 0:0"},
    };
    for (const auto& [isHour, value, expected] : cases) {
        isHour ? service->setWakeHour(value) : service->setWakeMinute(value);
        EXPECT_EQ(take(), disable + reload) << value;
        EXPECT_EQ(stored(), QLatin1StringView(expected)) << value;
    }
}

TEST_F(PowerScheduleTest, AdjustingWrapsAroundMidnight)
{
    open();
    const std::tuple<int, int, qint64, const char*> cases[] = {
        {23, 45, 15, "0:0"}, {0, 0, -15, "23:45"}, {7, 30, 720, "19:30"}, {10, 0, -1, "9:45"},
        {0, 15, -1440 * 3 - 30, "23:45"}, {6, 0, std::numeric_limits<qint64>::max(), "0:0"},
    };
    for (const auto& [hour, minute, delta, expected] : cases) {
        service->setWakeHour(hour);
        service->setWakeMinute(minute);
        service->adjustTime(delta);
        EXPECT_EQ(time(), QLatin1StringView(expected)) << delta;
    }
}

TEST_F(PowerScheduleTest, SwitchingOnWritesTheTimerAndOffRemovesIt)
{
    open();
    service->setWakeHour(6);
    service->setWakeMinute(15);
    take();

    service->setWakeEnabled(true);
    EXPECT_EQ(take(), reload + enable);
    EXPECT_TRUE(test::readFile(timerPath).contains("\nOnCalendar=*-*-* 06:15:00\nWakeSystem=true\n"));
    EXPECT_TRUE(test::readFile(dir.path() + QStringLiteral("/units/tallowmere-wake.service")).contains("ExecStart="));

    service->adjustTime(720); // hour and minute: two applies
    EXPECT_EQ(take(), reload + enable + reload + enable);
    EXPECT_TRUE(test::readFile(timerPath).contains("OnCalendar=*-*-* 18:15:00\n"));
    EXPECT_EQ(stored(), QStringLiteral("1 18:15"));

    service->setWakeEnabled(false);
    EXPECT_EQ(take(), disable + reload);
    EXPECT_FALSE(QFile::exists(timerPath));

    service->sleepNow();
    EXPECT_EQ(take(), "systemctl suspend\n");

    const CommandRunner real = childProcessRunner();
    EXPECT_EQ(real(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("exit 3")}), 3);
    EXPECT_EQ(real(QStringLiteral("/nonexistent/tallowmere-tool"), {}), -1);
}
