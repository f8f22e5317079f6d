#include "tests/support/TestSupport.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

using namespace tallowmere;

namespace {

// The real program with its own empty configuration, data and runtime folders; programs
// given the same home count as the same user's.
struct HeadlessProgram {
    std::shared_ptr<QTemporaryDir> home = std::make_shared<QTemporaryDir>();
    QProcess process;

    void start(const QStringList& arguments, bool withDisplay = true)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home->filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), home->filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home->path());
        if (withDisplay) {
            env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        } else {
            env.remove(QStringLiteral("DISPLAY"));
            env.remove(QStringLiteral("WAYLAND_DISPLAY"));
            env.remove(QStringLiteral("QT_QPA_PLATFORM"));
        }
        process.setProcessEnvironment(env);
        process.start(test::programPath(), arguments);
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

// One copy per user however the later start comes: headless, headless for want of a
// display, or windowed.
TEST(HeadlessRun, OneCopyPerUserAndOverridesForThisRunOnly)
{
    HeadlessProgram first;
    first.start({"--headless", "--server", "off", "--record", "off"});
    ASSERT_TRUE(first.waitForLog("running headless; statistics server off, network recording off"));

    const auto startBeside = [&](const QStringList& arguments, bool withDisplay) {
        auto later = std::make_unique<HeadlessProgram>();
        later->home = first.home;
        later->start(arguments, withDisplay);
        EXPECT_TRUE(later->process.waitForFinished(10000));
        later->seen = later->process.readAllStandardError();
        return later;
    };
    for (const auto& later : {startBeside({"--headless", "--server", "off"}, true), startBeside({}, false)}) {
        EXPECT_EQ(later->process.exitCode(), 1);
        EXPECT_TRUE(later->seen.contains("another copy is already running")) << later->seen.toStdString();
    }
    const auto windowed = startBeside({}, true);
    EXPECT_EQ(windowed->process.exitCode(), 0);
    EXPECT_TRUE(windowed->seen.contains("asked the running copy"));

    EXPECT_EQ(first.process.state(), QProcess::Running);
    ::kill(static_cast<pid_t>(first.process.processId()), SIGTERM);
    ASSERT_TRUE(first.process.waitForFinished(5000));
    EXPECT_EQ(first.process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(first.process.exitCode(), 0);
    EXPECT_FALSE(QFile::exists(first.home->filePath(QStringLiteral("config/Tallowmere/preferences.json"))));
}

TEST(HeadlessRun, HelpAndBadArguments)
{
    const test::ProgramRun help = test::runProgram(test::programPath(), {"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains("--headless"));
    const test::ProgramRun bad = test::runProgram(test::programPath(), {"--port", "1"});
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_TRUE(bad.err.contains("go with --headless"));
}
