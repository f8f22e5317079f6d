#include "update/CheckUpdateCommand.h"

#include "app/core/BuildInfo.h"
#include "tests/support/TestSupport.h"
#include "tests/update/UpdateTestKit.h"
#include "update/UpdateError.h"

#include <QProcess>
#include <QTextStream>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

const QString feedPath = QStringLiteral("/tallowmere/appcast.xml");
const QUrl archiveUrl(QStringLiteral("https://downloads.tallowmere.invalid/Tallowmere-7.1.zip"));

TEST(CheckUpdateCommand, PrintsTheOutcomeAndExitsWithItsCode)
{
    test::LoopbackHttpServer server;
    const auto run = [&](qint64 feedBuild, int status, QString& output) {
        server.serve(feedPath, test::feedXml(feedBuild, archiveUrl, "7.1"), status);
        QTextStream out(&output);
        return runCheckUpdateCommand(out, UpdateEnvironment{server.url(feedPath), 30, {}, {}, 0, {}});
    };
    QString offered, current, failed;
    EXPECT_EQ(run(31, 200, offered), checkUpdateExit::available);
    EXPECT_TRUE(offered.startsWith(QStringLiteral("Update Available: 7.1 (build 31)\nDownload: ") + archiveUrl.toString()))
        << offered.toStdString();
    EXPECT_EQ(run(30, 200, current), checkUpdateExit::upToDate);
    EXPECT_TRUE(current.startsWith(QStringLiteral("You're up to date."))) << current.toStdString();
    EXPECT_EQ(run(31, 404, failed), checkUpdateExit::failed);
    EXPECT_EQ(failed, updateErrorMessage(UpdateError::badResponse) + u'\n');
}

// Through the program itself, as a script would call it, with the feed from the environment.
TEST(CheckUpdateCommand, ProgramReportsAnOfferedBuild)
{
    test::LoopbackHttpServer server;
    server.serve(feedPath, test::feedXml(build::buildNumber + 1, archiveUrl, "7.1"));
    test::ScopedEnv feed("TALLOWMERE_UPDATE_FEED", server.url(feedPath).toEncoded());
    QProcess check;
    check.start(QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere"), {QStringLiteral("--check-update")});
    ASSERT_TRUE(test::waitUntil([&] { return check.state() == QProcess::NotRunning; }, 60'000));
    const QString output = QString::fromUtf8(check.readAllStandardOutput());
    EXPECT_EQ(check.exitCode(), checkUpdateExit::available) << output.toStdString();
    EXPECT_TRUE(output.contains(QStringLiteral("7.1 (build %1)").arg(build::buildNumber + 1))) << output.toStdString();
}

} // namespace
} // namespace tallowmere
