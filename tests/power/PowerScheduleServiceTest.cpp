#include "power/PowerScheduleService.h"

#include "core/PreferenceKeys.h"
#include "core/PreferencesStore.h"

#include "tests/power/WakeTestSupport.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

// The service with stand-ins for pkexec and systemctl that log their arguments; by default
// pkexec answers as it does when the password dialog is dismissed.
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
        writePkexec("exit 126");
    }
    // The granting one runs the real helper on the temporary unit directory.
    void writePkexec(const QByteArray& then)
    {
        tools.pkexec = test::writeScript(dir.path() + QStringLiteral("/pkexec"),
                                         "echo \"pkexec $*\" >> '" + log.toUtf8() + "'\n" + then + '\n');
    }
    void grantingPkexec()
    {
        writePkexec("helper=$1; shift\nSYSTEMCTL='" + tools.systemctl.toUtf8() + "' exec \"$helper\" --unit-dir '"
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
    QString time() const { return QString::asprintf("%02d:%02d", service->wakeHour(), service->wakeMinute()); }
    QString stored()
    {
        PreferencesStore reread(prefsPath);
        return QString::asprintf("%d %02lld:%02lld", reread.readBool(keys::wakeScheduleEnabled).value,
                                 reread.readInteger(keys::wakeScheduleHour).value,
                                 reread.readInteger(keys::wakeScheduleMinute).value);
    }
};

} // namespace

TEST_F(PowerScheduleTest, CorrectedValuesAreStoredAndAppliedOnce)
{
    open();
    service->setWakeEnabled(true);
    take();
    const std::tuple<bool, int, const char*> cases[] = {
        {true, 25, "23:30"}, {true, -3, "00:30"}, {false, 44, "00:30"}, {false, 59, "00:45"}, {false, 7, "00:00"},
    };
    for (const auto& [isHour, value, expected] : cases) {
        isHour ? service->setWakeHour(value) : service->setWakeMinute(value);
        EXPECT_EQ(take(), "pkexec HELPER install alice " + QByteArray(expected) + '\n') << value;
        EXPECT_EQ(stored(), QStringLiteral("1 ") + QLatin1StringView(expected)) << value;
    }
    // The dismissed password dialog leaves the schedule stored and says the wake is not set.
    EXPECT_FALSE(service->wakeInstalled());
    EXPECT_EQ(service->wakeProblem(), QStringLiteral("The administrator password was not given."));
}

TEST_F(PowerScheduleTest, AdjustingWrapsAroundMidnight)
{
    open();
    const std::tuple<int, int, qint64, const char*> cases[] = {
        {23, 45, 15, "00:00"}, {0, 0, -15, "23:45"}, {7, 30, 720, "19:30"}, {10, 0, -1, "09:45"},
        {0, 15, -1440 * 3 - 30, "23:45"}, {6, 0, std::numeric_limits<qint64>::max(), "00:00"},
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

TEST_F(PowerScheduleTest, ChangesDuringThePasswordDialogBecomeOneRequest)
{
    const QString answer = dir.path() + QStringLiteral("/answer");
    writePkexec("while [ ! -e '" + answer.toUtf8() + "' ]; do sleep 0.02; done\nexit 126");
    open();
    service->setWakeEnabled(true);
    ASSERT_TRUE(test::waitUntil([&] { return !test::readFile(log).isEmpty(); })); // the dialog is open
    for (int step = 0; step < 4; ++step)
        service->adjustTime(15);
    test::writeFile(dir.path(), QStringLiteral("answer"), {});
    EXPECT_EQ(take(), "pkexec HELPER install alice 07:30\npkexec HELPER install alice 08:30\n");
}

TEST_F(PowerScheduleTest, MissingPkexecOrHelperOrRefusalKeepsTheScheduleStored)
{
    const QString missing = dir.path() + QStringLiteral("/missing");
    const std::tuple<QString*, QString, const char*> cases[] = {
        {&tools.pkexec, missing, "Administrator rights cannot be asked for: pkexec is not installed."},
        {&tools.helper, missing, "The wake helper is not installed."},
        {&tools.pkexec, test::writeScript(dir.path() + QStringLiteral("/refusing"), "exit 127"),
         "Administrator rights were refused."},
    };
    for (const auto& [tool, replacement, problem] : cases) {
        SetUp();
        *tool = replacement;
        open();
        service->setWakeEnabled(true);
        take();
        EXPECT_EQ(stored(), QStringLiteral("1 07:30"));
        EXPECT_FALSE(service->wakeInstalled());
        EXPECT_EQ(service->wakeProblem(), QLatin1StringView(problem));
    }
}

TEST_F(PowerScheduleTest, CreationReadsWithoutWritingAndOnlyRemovesTheOldUserTimer)
{
    const QByteArray json = R"({"wakeScheduleEnabled": true, "wakeScheduleHour": 31, "wakeScheduleMinute": 50})";
    test::writeFile(dir.path(), QStringLiteral("preferences.json"), json);
    test::writeFile(tools.oldUserUnitDirectory, QStringLiteral("tallowmere-wake.timer"), "[Timer]\n");
    test::writeFile(tools.oldUserUnitDirectory, QStringLiteral("tallowmere-wake.service"), "[Service]\n");
    open();
    EXPECT_EQ(take(), "--user disable --now tallowmere-wake.timer\n--user daemon-reload\n");
    EXPECT_TRUE(QDir(tools.oldUserUnitDirectory).isEmpty());
    // The hour is taken as stored; the minute is cut down to a quarter.
    EXPECT_EQ(time(), QStringLiteral("31:45"));
    EXPECT_EQ(test::readFile(prefsPath), json);
    EXPECT_FALSE(service->wakeInstalled());
    EXPECT_EQ(service->wakeProblem(), QStringLiteral("The wake timer is not installed."));
}
