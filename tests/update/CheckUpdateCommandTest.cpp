#include "update/CheckUpdateCommand.h"

#include "core/BuildInfo.h"
#include "tests/support/TestSupport.h"
#include "tests/update/UpdateTestKit.h"
#include "update/UpdateError.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

const QString feedPath = QStringLiteral("/tallowmere/appcast.xml");
const QUrl archiveUrl(QStringLiteral("https://downloads.tallowmere.invalid/Tallowmere-7.1.zip"));

// Through the program itself, as a script would call it, with the feed from the environment.
TEST(CheckUpdateCommand, ProgramPrintsTheOutcomeAndExitsWithItsCode)
{
    test::LoopbackHttpServer server;
    test::ScopedEnv feed("TALLOWMERE_UPDATE_FEED", server.url(feedPath).toEncoded());
    const auto run = [&](qint64 feedBuild, int status, const QString& start) {
        server.serve(feedPath, test::feedXml(feedBuild, archiveUrl, "7.1"), status);
        const test::ProgramRun check = test::runProgram(test::programPath(), {QStringLiteral("--check-update")}, 60'000);
        EXPECT_TRUE(QString::fromUtf8(check.out).startsWith(start)) << check.out.constData();
        return check.exitCode;
    };
    const qint64 next = build::buildNumber + 1;
    EXPECT_EQ(run(next, 200, QStringLiteral("Update Available: 7.1 (build %1)\nDownload: %2\n").arg(next).arg(archiveUrl.toString())),
              checkUpdateExit::available);
    EXPECT_EQ(run(build::buildNumber, 200, QStringLiteral("You're up to date.")), checkUpdateExit::upToDate);
    EXPECT_EQ(run(next, 404, updateErrorMessage(UpdateError::badResponse) + u'\n'), checkUpdateExit::failed);
}

} // namespace
} // namespace tallowmere
