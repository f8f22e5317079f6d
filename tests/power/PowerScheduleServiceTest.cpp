#include "power/PowerScheduleService.h"

#include "core/PreferenceKeys.h"
#include "core/PreferencesStore.h"

#include "tests/power/WakeTestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

// The service with stand-ins for pkexec and systemctl that log their arguments. The "granting"
// pkexec runs the real helper on a temporary unit directory; the others answer like pkexec
// does when the password dialog is dismissed or authorisation fails.
struct PowerScheduleTest : ::testing::Test {
    QTemporaryDir dir;
    QString prefsPath = dir.path() + QStringLiteral("/preferences.json");
    QString units = dir.path() + QStringLiteral("/units");
    QString log = dir.path() + QStringLiteral("/calls.log");
    WakeTools tools;

    std::unique_ptr<PreferencesStore> store;
    std::unique_ptr<PowerScheduleService> service;

    void SetUp() override
    {
        QDir().mkpath(units);
        tools.user = QStringLiteral("alice");
        tools.helper = QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere-wake-helper");
        tools.systemUnitDirectory = units;
        tools.oldUserUnitDirectory = dir.path() + QStringLiteral("/user-units");
        tools.systemctl = test::writeRecordingSystemctl(dir.path() + QStringLiteral("/systemctl"), log, units);
        usePkexec("exit 126");
    }
    void usePkexec(const QByteArray& then)
    {
        tools.pkexec = test::writeScript(dir.path() + QStringLiteral("/pkexec"),
                                         "echo \"pkexec $*\" >> '" + log.toUtf8() + "'\n" + then + '\n');
    }
    void grantingPkexec()
    {
        usePkexec("helper=$1; shift\nSYSTEMCTL='" + tools.systemctl.toUtf8() + "' exec \"$helper\" --unit-dir '"
                  + units.toUtf8() + "' \"$@\"");
    }
    void open()
    {
        store = std::make_unique<PreferencesStore>(prefsPath);
        service = std::make_unique<PowerScheduleService>(*store, tools);
    }
    QByteArray take()
    {
        service->waitForCommands();
        QByteArray text = test::readFile(log);
        QFile::remove(log);
        return text.replace(tools.helper.toUtf8(), "HELPER");
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
    EXPECT_FALSE(service->wakeInstalled());
    EXPECT_EQ(service->wakeProblem(), QStringLiteral("The wake timer is not installed."));
}

TEST_F(PowerScheduleTest, CorrectedValuesAreStoredAndAppliedOnce)
{
    open();
    service->setWakeEnabled(true);
    take();
    const std::tuple<bool, int, const char*, const char*> cases[] = {
        {true, 25, "1 23:30", "23:30"}, {true, -3, "1 0:30", "00:30"}, {false, 44, "1 0:30", "00:30"},
        {false, 59, "1 0:45", "00:45"}, {false, 7, "1 0:0", "00:00"},  {false, -20, "1 0:0", "00:00"},
    };
    for (const auto& [isHour, value, expected, argument] : cases) {
        isHour ? service->setWakeHour(value) : service->setWakeMinute(value);
        EXPECT_EQ(take(), "pkexec HELPER install alice " + QByteArray(argument) + '\n') << value;
        EXPECT_EQ(stored(), QLatin1StringView(expected)) << value;
    }
    // The dismissed password dialog leaves the schedule stored and says the wake is not set.
    EXPECT_FALSE(service->wakeInstalled());
    EXPECT_EQ(service->wakeProblem(), QStringLiteral("The administrator password was not given."));
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
    // Off with nothing installed: the system already agrees, so nobody is asked for a password.
    EXPECT_EQ(take(), "");
}

TEST_F(PowerScheduleTest, SwitchingOnInstallsTheSystemTimerAndOffRemovesIt)
{
    grantingPkexec();
    open();
    service->setWakeHour(6);
    service->setWakeMinute(15);
    service->setWakeEnabled(true);
    EXPECT_EQ(take(), "pkexec HELPER install alice 06:15\ndaemon-reload\nenable --now tallowmere-wake-alice.timer\n");
    EXPECT_TRUE(service->wakeInstalled());
    EXPECT_EQ(service->wakeProblem(), QString());

    service->adjustTime(720);
    take();
    const QString timer = units + QStringLiteral("/tallowmere-wake-alice.timer");
    EXPECT_TRUE(test::readFile(timer).contains("OnCalendar=*-*-* 18:15:00\n"));
    EXPECT_EQ(stored(), QStringLiteral("1 18:15"));
    service->setWakeMinute(15); // already in place: no password asked
    EXPECT_EQ(take(), "");

    service->setWakeEnabled(false);
    EXPECT_EQ(take(), "pkexec HELPER remove alice\ndisable --now tallowmere-wake-alice.timer\ndaemon-reload\n");
    EXPECT_FALSE(QFile::exists(timer));
    EXPECT_FALSE(service->wakeInstalled());

    service->sleepNow();
    EXPECT_EQ(take(), "suspend\n");
}

TEST_F(PowerScheduleTest, MissingPkexecOrHelperKeepsTheScheduleStored)
{
    const std::pair<QString, QString> missing[] = {
        {QStringLiteral("pkexec"), QStringLiteral("Administrator rights cannot be asked for: pkexec is not installed.")},
        {QStringLiteral("helper"), QStringLiteral("The wake helper is not installed.")},
    };
    for (const auto& [what, problem] : missing) {
        SetUp();
        (what == QStringLiteral("pkexec") ? tools.pkexec : tools.helper) = dir.path() + QStringLiteral("/missing");
        open();
        service->setWakeEnabled(true);
        take();
        EXPECT_EQ(stored(), QStringLiteral("1 7:30"));
        EXPECT_FALSE(service->wakeInstalled());
        EXPECT_EQ(service->wakeProblem(), problem);
    }
    SetUp();
    usePkexec("exit 127");
    open();
    service->applyAgain();
    EXPECT_EQ(take(), "pkexec HELPER install alice 07:30\n");
    EXPECT_EQ(service->wakeProblem(), QStringLiteral("Administrator rights were refused."));
}

TEST_F(PowerScheduleTest, TheOldUserTimerIsRemovedAtStart)
{
    test::writeFile(tools.oldUserUnitDirectory, QStringLiteral("tallowmere-wake.timer"), "[Timer]\n");
    test::writeFile(tools.oldUserUnitDirectory, QStringLiteral("tallowmere-wake.service"), "[Service]\n");
    open();
    EXPECT_EQ(take(), "--user disable --now tallowmere-wake.timer\n--user daemon-reload\n");
    EXPECT_TRUE(QDir(tools.oldUserUnitDirectory).isEmpty());
}
