#include "power/PowerScheduleService.h"

#include "app/settings/PreferenceKeys.h"
#include "app/settings/PreferencesStore.h"

#include "tests/support/TestSupport.h"

#include <QFile>
#include <QMutex>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

// Records every command instead of running it; the service calls it from its own thread.
struct CommandLog {
    QMutex mutex;
    QStringList lines;
    int status = 0;

    CommandRunner runner()
    {
        return [this](const QString& program, const QStringList& arguments) {
            QMutexLocker lock(&mutex);
            lines << (QStringList{program} + arguments).join(u' ');
            return status;
        };
    }
    // The commands since the last call, one per line.
    std::string take()
    {
        QMutexLocker lock(&mutex);
        return std::exchange(lines, {}).join(u'\n').toStdString();
    }
};

const std::string reload = "systemctl --user daemon-reload";
const std::string enable = "systemctl --user enable --now tallowmere-wake.timer";
const std::string disable = "systemctl --user disable --now tallowmere-wake.timer";

std::string lines(std::initializer_list<std::string> commands)
{
    std::string joined;
    for (const std::string& command : commands)
        joined += (joined.empty() ? "" : "\n") + command;
    return joined;
}

struct PowerScheduleTest : ::testing::Test {
    QTemporaryDir dir;
    CommandLog log;
    QString prefsPath() const { return dir.path() + QStringLiteral("/preferences.json"); }
    QString unitDir() const { return dir.path() + QStringLiteral("/units"); }
    QString timerPath() const { return unitDir() + QStringLiteral("/tallowmere-wake.timer"); }
    QString servicePath() const { return unitDir() + QStringLiteral("/tallowmere-wake.service"); }

    std::unique_ptr<PowerScheduleService> makeService(PreferencesStore& store)
    {
        return std::make_unique<PowerScheduleService>(store, log.runner(), unitDir());
    }
    // Each assignment stores and applies; the stored time after it.
    QString storedTime()
    {
        PreferencesStore reread(prefsPath());
        return QString::asprintf("%lld:%lld", reread.readInteger(keys::wakeScheduleHour).value,
                                 reread.readInteger(keys::wakeScheduleMinute).value);
    }
};

} // namespace

TEST_F(PowerScheduleTest, CreationReadsWithoutWritingOrRunning)
{
    const std::tuple<QByteArray, bool, int, int> cases[] = {
        {"{}", false, 7, 30},
        {R"({"wakeScheduleEnabled": true, "wakeScheduleHour": 6, "wakeScheduleMinute": 50})", true, 6, 45},
        // The hour is taken as it is; a minute below 1 reads as 0, above 59 as 45.
        {R"({"wakeScheduleHour": 31, "wakeScheduleMinute": -5})", false, 31, 0},
        {R"({"wakeScheduleHour": 5.5, "wakeScheduleMinute": 120})", false, 7, 45},
        {R"({"wakeScheduleEnabled": "yes", "wakeScheduleHour": "8", "wakeScheduleMinute": 14})", false, 7, 0},
    };
    for (const auto& [json, enabled, hour, minute] : cases) {
        test::writeFile(dir.path(), QStringLiteral("preferences.json"), json);
        PreferencesStore store(prefsPath());
        const auto service = makeService(store);
        service->waitForCommands();
        EXPECT_EQ(service->wakeEnabled(), enabled) << json.constData();
        EXPECT_EQ(service->wakeHour(), hour) << json.constData();
        EXPECT_EQ(service->wakeMinute(), minute) << json.constData();
        EXPECT_EQ(test::readFile(prefsPath()), json);
    }
    EXPECT_EQ(log.take(), "");
    EXPECT_FALSE(QFile::exists(timerPath()));
}

TEST_F(PowerScheduleTest, OutOfRangeValuesAreCorrectedWithOneApply)
{
    PreferencesStore store(prefsPath());
    const auto service = makeService(store);
    const std::tuple<bool, int, const char*> cases[] = {
        {true, 25, "23:30"}, {true, -3, "0:30"}, {true, 12, "12:30"},
        {false, 44, "12:30"}, {false, 59, "12:45"}, {false, 7, "12:0"}, {false, -20, "12:0"}, {false, 15, "12:15"},
    };
    for (const auto& [isHour, value, stored] : cases) {
        QSignalSpy hourSpy(service.get(), &PowerScheduleService::wakeHourChanged);
        isHour ? service->setWakeHour(value) : service->setWakeMinute(value);
        service->waitForCommands();
        EXPECT_EQ(storedTime(), QString::fromLatin1(stored)) << value;
        // Disabled: every apply switches the timer off again.
        EXPECT_EQ(log.take(), lines({disable, reload})) << value;
        EXPECT_LE(hourSpy.count(), 1);
    }
}

TEST_F(PowerScheduleTest, AdjustingWrapsAroundMidnight)
{
    PreferencesStore store(prefsPath());
    const auto service = makeService(store);
    const std::tuple<int, int, qint64, int, int> cases[] = {
        {23, 45, 15, 0, 0},     {0, 0, -15, 23, 45},  {7, 30, 720, 19, 30}, {19, 30, -720, 7, 30},
        {10, 0, 7, 10, 0},      {10, 0, -1, 9, 45},   {0, 15, -1440 * 3 - 30, 23, 45},
        {6, 0, std::numeric_limits<qint64>::max(), 0, 0},
    };
    for (const auto& [hour, minute, delta, wantHour, wantMinute] : cases) {
        service->setWakeHour(hour);
        service->setWakeMinute(minute);
        service->adjustTime(delta);
        EXPECT_EQ(service->wakeHour(), wantHour) << hour << ":" << minute << " " << delta;
        EXPECT_EQ(service->wakeMinute(), wantMinute) << hour << ":" << minute << " " << delta;
    }
}

TEST_F(PowerScheduleTest, SwitchingOnWritesTheTimerAndOffRemovesIt)
{
    PreferencesStore store(prefsPath());
    const auto service = makeService(store);
    service->setWakeHour(6);
    service->setWakeMinute(15);
    service->waitForCommands();
    log.take();

    log.status = 1; // a failing command changes nothing
    service->setWakeEnabled(true);
    service->waitForCommands();
    EXPECT_EQ(log.take(), lines({reload, enable}));
    const QByteArray timer = test::readFile(timerPath());
    EXPECT_TRUE(timer.contains("\nOnCalendar=*-*-* 06:15:00\n")) << timer.constData();
    EXPECT_TRUE(timer.contains("\nWakeSystem=true\n"));
    EXPECT_TRUE(timer.contains("\nUnit=tallowmere-wake.service\n"));
    EXPECT_TRUE(timer.contains("\nWantedBy=timers.target\n"));
    EXPECT_TRUE(test::readFile(servicePath()).contains("\nType=oneshot\n"));
    EXPECT_TRUE(service->wakeEnabled());
    EXPECT_TRUE(PreferencesStore(prefsPath()).readBool(keys::wakeScheduleEnabled).value);

    service->adjustTime(720);
    service->waitForCommands();
    EXPECT_EQ(log.take(), lines({reload, enable, reload, enable}));
    EXPECT_TRUE(test::readFile(timerPath()).contains("\nOnCalendar=*-*-* 18:15:00\n"));

    service->setWakeEnabled(false);
    service->waitForCommands();
    EXPECT_EQ(log.take(), lines({disable, reload}));
    EXPECT_FALSE(QFile::exists(timerPath()));
    EXPECT_FALSE(QFile::exists(servicePath()));
}

TEST_F(PowerScheduleTest, SleepNowSuspendsThroughTheSameRunner)
{
    PreferencesStore store(prefsPath());
    const auto service = makeService(store);
    service->sleepNow();
    service->waitForCommands();
    EXPECT_EQ(log.take(), "systemctl suspend");
}

TEST_F(PowerScheduleTest, DefaultRunnerReportsExitStatusOrMinusOne)
{
    const CommandRunner run = childProcessRunner();
    EXPECT_EQ(run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("exit 3")}), 3);
    EXPECT_EQ(run(QStringLiteral("/nonexistent/tallowmere-tool"), {}), -1);
}
