#include "tests/history/HistoryTestSupport.h"
#include "tests/support/LoopbackConnection.h"

#include <QProcess>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using test::LoopbackConnection;

// build/tallowmere (by default --headless --record on), with data and settings in temporary
// folders; the QProcess kills a program still running when the test ends.
class ProgramRunTest : public ::testing::Test {
protected:
    void start(const QString& dataHome, const QStringList& arguments = {"--headless", "--record", "on"})
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", dataHome);
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));
        for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            env.remove(display);
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere"), arguments);
        ASSERT_TRUE(process.waitForStarted());
    }
    bool stderrContains(const QString& text)
    {
        errors += process.readAllStandardError();
        return errors.contains(text.toUtf8());
    }
    QString database() const { return home.filePath("data/Tallowmere/network-usage.sqlite"); }

    // Bytes recorded for this test process (its command name) talking to the listener.
    std::pair<std::int64_t, std::int64_t> recordedToServer() const
    {
        const std::string where = std::string(" FROM endpoint_usage WHERE app = '") + qPrintable(test::ownCommand())
            + "' AND ip = '" + LoopbackConnection::kServerAddress + "'";
        return {test::scalar(database(), "SELECT coalesce(sum(bytes_in), 0)" + where),
                test::scalar(database(), "SELECT coalesce(sum(bytes_out), 0)" + where)};
    }

    QTemporaryDir home;
    QProcess process;
    QByteArray errors;
};

TEST_F(ProgramRunTest, RecordsRealTrafficAndKeepsCommittedBatchesThroughSigkill)
{
    // The connection exists before the first sample, which takes the baseline at launch.
    LoopbackConnection connection;
    start(home.filePath("data"));
    ASSERT_TRUE(test::waitUntil([&] { return stderrContains("running headless"); }, 10'000)) << errors.constData();
    QTest::qWait(1000);

    constexpr std::int64_t up = 40'000, down = 160'000;
    connection.exchange(up, down);
    // Recording samples once a second.
    ASSERT_TRUE(test::waitUntil([&] { return recordedToServer() == std::pair{down, up}; }, 25'000))
        << "recorded in " << recordedToServer().first << " out " << recordedToServer().second;
    // Keep traffic going so the kill may well land in the middle of a batch.
    connection.exchange(5000, 5000);
    ::kill(static_cast<pid_t>(process.processId()), SIGKILL);
    ASSERT_TRUE(process.waitForFinished(5000));

    EXPECT_EQ(test::scalar<QString>(database(), "PRAGMA integrity_check"), "ok");
    const auto [in, out] = recordedToServer();
    EXPECT_TRUE(in >= down && out >= up) << "in " << in << " out " << out;
}

TEST_F(ProgramRunTest, UnusableDataDirectoryGivesOneMessageAndTheProgramRunsOn)
{
    // A regular file where the data folder should be: no privilege can create a folder in it.
    test::writeFile(home.path(), "not-a-folder", {});
    start(home.filePath("not-a-folder"));
    ASSERT_TRUE(test::waitUntil([&] { return stderrContains("network history is off"); }, 10'000)) << errors.constData();
    QTest::qWait(1500);
    stderrContains({});
    EXPECT_EQ(process.state(), QProcess::Running);
    EXPECT_EQ(errors.count("network history"), 1) << errors.constData();
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(5000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
}

TEST_F(ProgramRunTest, HistoryCommandExitsWithOneWhenThereIsNoDatabase)
{
    start(home.filePath("data"), {"--history", "30D"});
    ASSERT_TRUE(process.waitForFinished(10'000));
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(stderrContains("no network history"));
    EXPECT_FALSE(QFileInfo::exists(database()));
}

} // namespace
} // namespace tallowmere
