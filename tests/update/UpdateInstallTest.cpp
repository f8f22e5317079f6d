#include "update/UpdateService.h"

#include "tests/support/TestSupport.h"
#include "tests/update/UpdateTestKit.h"
#include "update/UpdateError.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using Kind = UpdateState::Kind;
const QString feedPath = QStringLiteral("/tallowmere/appcast.xml");
const QString archivePath = QStringLiteral("/Tallowmere-2.0.zip");

// An installed copy in a folder with spaces, a private temporary folder, a loopback server for
// feed and archive, and a sleeping process standing in for the running program.
class UpdateInstall : public ::testing::Test {
protected:
    void SetUp() override
    {
        app = root.path() + QStringLiteral("/My Programs/Tallowmere.app");
        QDir().mkpath(staging);
        QDir().mkpath(temporary);
        test::makeFakeApp(app, QStringLiteral("old"), marker);
        server.serve(feedPath, test::feedXml(2, server.url(archivePath)));
    }

    // Offered build 2 and asked to install it; returns once it failed or asked the program to quit.
    std::unique_ptr<UpdateService> install(const QString& programPath = {})
    {
        UpdateEnvironment environment{server.url(feedPath), 1,
                                      programPath.isEmpty() ? app + QStringLiteral("/bin/tallowmere") : programPath,
                                      temporary, running.pid, [this] { ++quitCalls; }};
        auto service = std::make_unique<UpdateService>(std::move(environment));
        const int downloads = server.requestCount(archivePath);
        service->installUpdate();
        service->checkForUpdates(true);
        service->installUpdate(); // while checking: nothing
        EXPECT_TRUE(test::waitUntil([&] { return service->state().is(Kind::available); }, 20'000));
        EXPECT_EQ(server.requestCount(archivePath), downloads) << "nothing to install before an offer";
        service->installUpdate();
        EXPECT_TRUE(test::waitUntil([&] { return quitCalls > 0 || service->state().is(Kind::failed); }, 30'000));
        return service;
    }

    void serveArchiveOf(const QStringList& entries) { server.serve(archivePath, test::zipOf(staging, entries)); }
    QString installedLabel() const { return QString::fromUtf8(test::readFile(app + QStringLiteral("/share/label.txt"))); }
    QStringList startedCopy()
    {
        running.stop();
        EXPECT_TRUE(test::waitUntil([&] { return test::markerLines(marker).size() == 2; }, 15'000));
        return test::markerLines(marker);
    }

    QTemporaryDir root;
    QString app, staging = root.path() + QStringLiteral("/staging"), temporary = root.path() + QStringLiteral("/tmp dir");
    QString marker = root.path() + QStringLiteral("/started");
    test::LoopbackHttpServer server;
    test::StandIn running;
    int quitCalls = 0;
};

// Two bundles and a loose file at the top of the archive: the first bundle the listing
// returns is installed.
TEST_F(UpdateInstall, QuitsAndTheScriptSwapsOnceTheProgramHasExited)
{
    for (const QString& name : {QStringLiteral("First"), QStringLiteral("Second")})
        test::makeFakeApp(staging + u'/' + name + QStringLiteral(".app"), name, marker);
    test::writeFile(staging, QStringLiteral("README.txt"), "read me");
    serveArchiveOf({QStringLiteral("README.txt"), QStringLiteral("Second.app"), QStringLiteral("First.app")});
    auto service = install();
    ASSERT_EQ(quitCalls, 1);
    EXPECT_EQ(service->state(), UpdateState::installing());
    const QString uuid = QStringLiteral("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}");
    QStringList left = QDir(temporary).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QString& pattern : {QStringLiteral("TallowmereUpdate-%1\\.zip"), QStringLiteral("TallowmereUpdate-%1"),
                                   QStringLiteral("tallowmere-update-%1\\.sh")})
        EXPECT_EQ(left.removeIf([&](const QString& name) {
            return QRegularExpression(QStringLiteral("^%1$").arg(pattern.arg(uuid))).match(name).hasMatch();
        }), 1) << pattern.toStdString();
    EXPECT_EQ(left, QStringList()) << "nothing else, such as the partial download, is left";
    const QString unpacked = QDir(temporary).entryList({QStringLiteral("TallowmereUpdate-*")}, QDir::Dirs).value(0);
    QProcess ls; // -U: directory order, as readdir returns it
    ls.start(QStringLiteral("/bin/ls"), {QStringLiteral("-U"), temporary + u'/' + unpacked});
    ASSERT_TRUE(ls.waitForFinished());
    const QStringList order = QString::fromUtf8(ls.readAllStandardOutput()).split(u'\n').filter(QStringLiteral(".app"));
    ASSERT_EQ(order.size(), 2);

    QTest::qWait(500);
    EXPECT_EQ(installedLabel(), QStringLiteral("old")) << "nothing changes while the program still runs";
    const QString first = order.first().chopped(4);
    EXPECT_EQ(startedCopy(), QStringList({first, app + QStringLiteral("/bin/tallowmere")}));
    EXPECT_EQ(installedLabel(), first);
    EXPECT_FALSE(QFileInfo::exists(app + QStringLiteral(".old")));
}

TEST_F(UpdateInstall, FailuresLeaveTheProgramRunningAndUnchanged)
{
    // The archive served as bytes with a status, or a copy made at `folder` in staging and
    // zipped by its top entry; `program` is where the running copy lives when not in the bundle.
    struct Case { const char* name; QByteArray bytes; int status; QString folder, message, program; };
    const QString notFound = updateErrorMessage(UpdateError::appNotFound);
    const std::vector<Case> cases = {
        {"404", "missing", 404, {}, updateErrorMessage(UpdateError::badResponse), {}},
        {"not a zip", "PK, but no archive", 200, {}, updateErrorMessage(UpdateError::unzipFailed), {}},
        {"cut off", {}, 0, {}, {}, {}}, // the transport's own words
        {"only hidden bundle", {}, 200, QStringLiteral(".Tallowmere.app"), notFound, {}},
        {"bundle one folder down", {}, 200, QStringLiteral("Release/Tallowmere.app"), notFound, {}},
        {"bundle without bin/tallowmere", {}, 200, QStringLiteral("Tallowmere.app/lib"), notFound, {}},
        {"not installed as Tallowmere.app", "unused", 200, {}, QStringLiteral("not installed in a Tallowmere.app"),
         QStringLiteral("/usr/bin/tallowmere")},
    };
    for (const auto& [name, bytes, status, folder, message, program] : cases) {
        SCOPED_TRACE(name);
        QDir(staging).removeRecursively();
        server.serve(archivePath, bytes, status);
        if (!folder.isEmpty()) {
            test::makeFakeApp(staging + u'/' + folder, QStringLiteral("new"), marker);
            serveArchiveOf({folder.section(u'/', 0, 0)});
        }
        const int downloads = server.requestCount(archivePath);
        const UpdateState state = install(program)->state();
        if (program.isEmpty() && !message.isEmpty())
            EXPECT_EQ(state, UpdateState::failed(message));
        else
            EXPECT_TRUE(state.is(Kind::failed) && state.failureMessage().contains(message) && !state.failureMessage().isEmpty());
        EXPECT_EQ(server.requestCount(archivePath) > downloads, program.isEmpty()) << "a refusal comes before downloading";
        QTest::qWait(50);
        EXPECT_EQ(quitCalls, 0);
        EXPECT_EQ(installedLabel(), QStringLiteral("old"));
        EXPECT_EQ(QDir(temporary).entryList({QStringLiteral("*.sh")}), QStringList()) << "no script was written";
    }
}

TEST(InstalledAppFolder, OnlyABinFolderDirectlyInsideTallowmereAppCounts)
{
    QTemporaryDir root;
    const QString app = root.path() + QStringLiteral("/x y/Tallowmere.app");
    QDir().mkpath(app + QStringLiteral("/bin"));
    QDir().mkpath(root.path() + QStringLiteral("/Tallowmere.app.d/bin"));
    EXPECT_EQ(installedAppFolder(app + QStringLiteral("/bin/../bin/tallowmere")), std::optional(app));
    for (const QString& other : {app + QStringLiteral("/tallowmere"), app + QStringLiteral("/libexec/bin/tallowmere"),
                                 root.path() + QStringLiteral("/Tallowmere.app.d/bin/tallowmere"), QString()})
        EXPECT_EQ(installedAppFolder(other), std::nullopt) << other.toStdString();
}

} // namespace
} // namespace tallowmere
