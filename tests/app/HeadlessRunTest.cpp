#include "tests/support/TestSupport.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

using namespace tallowmere;

namespace {

// The real program, started headless with its own empty configuration and data folders.
struct HeadlessProgram {
    QTemporaryDir home;
    QProcess process;

    void start(const QStringList& arguments, bool withDisplay = true)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
        if (!withDisplay) {
            env.remove(QStringLiteral("DISPLAY"));
            env.remove(QStringLiteral("WAYLAND_DISPLAY"));
            env.remove(QStringLiteral("QT_QPA_PLATFORM"));
        }
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere"), arguments);
        ASSERT_TRUE(process.waitForStarted());
    }

    // Everything read so far is kept: two lines may arrive in one read.
    bool waitForLog(const QString& text)
    {
        return test::waitUntil([&] {
            seen += process.readAllStandardError();
            return seen.contains(text.toUtf8());
        }, 10000);
    }

    QByteArray seen;
};

} // namespace

TEST(HeadlessRun, OverridesAreReportedAndSigtermEndsCleanly)
{
    HeadlessProgram program;
    program.start({"--headless", "--server", "off", "--record", "off"});
    ASSERT_TRUE(program.waitForLog("running headless; statistics server off, network recording off"));
    ::kill(static_cast<pid_t>(program.process.processId()), SIGTERM);
    ASSERT_TRUE(program.process.waitForFinished(5000));
    EXPECT_EQ(program.process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.process.exitCode(), 0);
    // Overrides are for this run only.
    EXPECT_FALSE(QFile::exists(program.home.filePath(QStringLiteral("config/Tallowmere/preferences.json"))));
}

TEST(HeadlessRun, NoDisplayFallsBackToHeadlessAndSigintEndsIt)
{
    HeadlessProgram program;
    program.start({}, false);
    ASSERT_TRUE(program.waitForLog("no display found"));
    ASSERT_TRUE(program.waitForLog("network recording on"));
    ::kill(static_cast<pid_t>(program.process.processId()), SIGINT);
    ASSERT_TRUE(program.process.waitForFinished(5000));
    EXPECT_EQ(program.process.exitCode(), 0);
}

TEST(HeadlessRun, HelpAndBadArguments)
{
    QProcess help;
    help.start(QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere"), {"--help"});
    ASSERT_TRUE(help.waitForFinished(5000));
    EXPECT_EQ(help.exitCode(), 0);
    EXPECT_TRUE(help.readAllStandardOutput().contains("--headless"));

    QProcess bad;
    bad.start(QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere"), {"--port", "1"});
    ASSERT_TRUE(bad.waitForFinished(5000));
    EXPECT_EQ(bad.exitCode(), 2);
    EXPECT_TRUE(bad.readAllStandardError().contains("go with --headless"));
}
