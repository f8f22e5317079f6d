#include "tests/power/WakeTestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace tallowmere;

namespace {

// The real helper, run on a temporary unit directory with a recording systemctl.
struct WakeHelperTest : ::testing::Test {
    QTemporaryDir dir;
    QString units = dir.path() + QStringLiteral("/units");
    QString log = dir.path() + QStringLiteral("/systemctl.log");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();

    void SetUp() override
    {
        QDir().mkpath(units);
        environment.remove(QStringLiteral("PKEXEC_UID"));
        environment.insert(QStringLiteral("SYSTEMCTL"),
                           test::writeRecordingSystemctl(dir.path() + QStringLiteral("/systemctl"), log, units));
    }
    int run(QStringList arguments, bool withUnitDir = true)
    {
        if (withUnitDir)
            arguments = QStringList{QStringLiteral("--unit-dir"), units} + arguments;
        QProcess helper;
        helper.setProcessEnvironment(environment);
        helper.start(QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere-wake-helper"), arguments);
        helper.waitForFinished();
        return helper.exitStatus() == QProcess::NormalExit ? helper.exitCode() : -1;
    }
    QByteArray takeCalls()
    {
        const QByteArray text = test::readFile(log);
        QFile::remove(log);
        return text;
    }
    QStringList unitFiles() { return QDir(units).entryList(QDir::Files | QDir::Hidden); }
};

} // namespace

TEST_F(WakeHelperTest, InstallsReplacesAndRemovesTheUnits)
{
    ASSERT_EQ(run({"install", "alice", "06:15"}), 0);
    EXPECT_EQ(takeCalls(), "daemon-reload\nenable --now tallowmere-wake-alice.timer\n");
    EXPECT_EQ(unitFiles(), QStringList({"tallowmere-wake-alice.service", "tallowmere-wake-alice.timer"}));
    const QString timer = units + QStringLiteral("/tallowmere-wake-alice.timer");
    const QByteArray text = test::readFile(timer);
    EXPECT_TRUE(text.contains("\nOnCalendar=*-*-* 06:15:00\nWakeSystem=true\nAccuracySec=1s\nPersistent=false\n"));
    struct stat info {};
    ASSERT_EQ(stat(QFile::encodeName(timer).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
    EXPECT_TRUE(test::readFile(units + QStringLiteral("/tallowmere-wake-alice.service")).contains("\nExecStart=/bin/true\n"));

    ASSERT_EQ(run({"install", "alice", "23:59"}), 0);
    EXPECT_TRUE(test::readFile(timer).contains("OnCalendar=*-*-* 23:59:00\n"));
    takeCalls();

    ASSERT_EQ(run({"remove", "alice"}), 0);
    EXPECT_EQ(takeCalls(), "disable --now tallowmere-wake-alice.timer\ndaemon-reload\n");
    EXPECT_TRUE(unitFiles().isEmpty());
    // Removing what is not there is not an error and disables nothing.
    ASSERT_EQ(run({"remove", "alice"}), 0);
    EXPECT_EQ(takeCalls(), "daemon-reload\n");
}

TEST_F(WakeHelperTest, RefusesEveryArgumentOutsideItsRules)
{
    const QStringList refused[] = {
        {"install", "", "07:30"},         {"install", "../../etc/x", "07:30"}, {"install", "-rf", "07:30"},
        {"install", ".hidden", "07:30"},  {"install", "a b", "07:30"},       {"install", "a/b", "07:30"},
        {"install", "bob$", "07:30"},     {"install", QString(33, u'a'), "07:30"},
        {"install", "alice", "7:30"},     {"install", "alice", "24:00"},     {"install", "alice", "23:60"},
        {"install", "alice", "07:30:00"}, {"install", "alice", "0a:00"},     {"install", "alice", "-1:30"},
        {"install", "alice"},             {"remove", "alice", "07:30"},      {"enable", "alice"},
        {},
    };
    for (const QStringList& arguments : refused)
        EXPECT_EQ(run(arguments), 2) << arguments.join(u' ').toStdString();
    EXPECT_EQ(run({"--unit-dir", "relative/units", "remove", "alice"}, false), 2);
    EXPECT_EQ(run({"--unit-dir"}, false), 2);
    EXPECT_TRUE(unitFiles().isEmpty());
    EXPECT_EQ(takeCalls(), "");
}

TEST_F(WakeHelperTest, ThroughPkexecOnlyTheCallerAndOnlyTheSystemDirectory)
{
    // pkexec sets PKEXEC_UID; then no other directory and no other user's name is accepted.
    environment.insert(QStringLiteral("PKEXEC_UID"), QString::number(getuid()));
    EXPECT_EQ(run({"install", "alice", "07:30"}), 2);
    EXPECT_EQ(run({"remove", "tallowmere-nobody"}, false), 2);
    environment.insert(QStringLiteral("PKEXEC_UID"), QStringLiteral("not-a-number"));
    EXPECT_EQ(run({"remove", "root"}, false), 2);
    environment.insert(QStringLiteral("PKEXEC_UID"), QStringLiteral("4294967290"));
    EXPECT_EQ(run({"remove", "root"}, false), 2);
    EXPECT_EQ(takeCalls(), "");
}

TEST_F(WakeHelperTest, FailuresAreReportedAsFailures)
{
    environment.insert(QStringLiteral("SYSTEMCTL_STATUS"), QStringLiteral("1"));
    EXPECT_EQ(run({"install", "alice", "07:30"}), 1);
    EXPECT_EQ(takeCalls(), "daemon-reload\n"); // nothing enabled after a failed reload
    environment.insert(QStringLiteral("SYSTEMCTL"), dir.path() + QStringLiteral("/no-such-systemctl"));
    EXPECT_EQ(run({"remove", "alice"}), 1);
    QDir(units).removeRecursively();
    EXPECT_EQ(run({"install", "alice", "07:30"}), 1);
}
