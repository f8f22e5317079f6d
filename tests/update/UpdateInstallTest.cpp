#include "update/UpdateService.h"

#include "tests/support/TestSupport.h"
#include "tests/update/UpdateTestKit.h"
#include "update/PrivateFolder.h"
#include "update/UpdateError.h"

#include <QCoreApplication>
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

// An installed copy in a folder with spaces, a private working folder, a loopback server for
// feed and archive, a signing key and a sleeping process standing in for the running program.
class UpdateInstall : public ::testing::Test {
protected:
    void SetUp() override
    {
        app = root.path() + QStringLiteral("/My Programs/Tallowmere.app");
        QDir().mkpath(staging);
        QDir().mkpath(temporary);
        test::makeFakeApp(app, QStringLiteral("old"), marker);
    }

    // Offered build 2 and asked to install it; returns once it failed or asked the program to quit.
    std::unique_ptr<UpdateService> install(const QString& programPath = {})
    {
        UpdateEnvironment environment{server.url(feedPath), 1,
                                      programPath.isEmpty() ? app + QStringLiteral("/bin/tallowmere") : programPath,
                                      temporary, running.pid, [this] { ++quitCalls; }, temporary, key.publicKey()};
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

    // The archive and a feed offering it with `signature` (by default that of the archive).
    void serveArchive(const QByteArray& bytes, int status = 200, std::optional<QByteArray> signature = std::nullopt,
                      const QUrl& url = {})
    {
        server.serve(archivePath, bytes, status);
        server.serve(feedPath, test::feedXml(2, url.isEmpty() ? server.url(archivePath) : url, "9.9",
                                             signature.value_or(key.sign(bytes))));
    }
    QByteArray zipOfStaging(const QStringList& entries) { return test::zipOf(staging, entries); }
    QString installedLabel() const { return QString::fromUtf8(test::readFile(app + QStringLiteral("/share/label.txt"))); }
    QStringList startedCopy()
    {
        running.stop();
        EXPECT_TRUE(test::waitUntil([&] { return test::markerLines(marker).size() == 2; }, 15'000));
        return test::markerLines(marker);
    }

    QTemporaryDir root;
    QString app, staging = root.path() + QStringLiteral("/staging"), temporary = root.path() + QStringLiteral("/tmp dir");
    QString work = temporary + QStringLiteral("/Tallowmere");
    QString marker = root.path() + QStringLiteral("/started");
    test::LoopbackHttpServer server;
    test::SigningKey key;
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
    serveArchive(zipOfStaging({QStringLiteral("README.txt"), QStringLiteral("Second.app"), QStringLiteral("First.app")}));
    auto service = install();
    ASSERT_EQ(quitCalls, 1);
    EXPECT_EQ(service->state(), UpdateState::installing());
    EXPECT_EQ(QDir(temporary).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList(QStringLiteral("Tallowmere")));
    EXPECT_EQ(test::fileMode(work), 0700);
    const QString uuid = QStringLiteral("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}");
    QStringList left = QDir(work).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QString& pattern : {QStringLiteral("TallowmereUpdate-%1\\.zip"), QStringLiteral("TallowmereUpdate-%1"),
                                   QStringLiteral("tallowmere-update-%1\\.sh")})
        EXPECT_EQ(left.removeIf([&](const QString& name) {
            return QRegularExpression(QStringLiteral("^%1$").arg(pattern.arg(uuid))).match(name).hasMatch();
        }), 1) << pattern.toStdString();
    EXPECT_EQ(left, QStringList()) << "nothing else, such as the partial download, is left";
    const QString script = QDir(work).entryList({QStringLiteral("*.sh")}).value(0);
    EXPECT_EQ(test::fileMode(work + u'/' + script), 0600) << "the script is ours alone";
    const QString unpacked = QDir(work).entryList({QStringLiteral("TallowmereUpdate-*")}, QDir::Dirs).value(0);
    QProcess ls; // -U: directory order, as readdir returns it
    ls.start(QStringLiteral("/bin/ls"), {QStringLiteral("-U"), work + u'/' + unpacked});
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
    const auto zipOfApp = [&](const QString& folder) {
        QDir(staging).removeRecursively();
        test::makeFakeApp(staging + u'/' + folder, QStringLiteral("new"), marker);
        return zipOfStaging({folder.section(u'/', 0, 0)});
    };
    const QByteArray good = zipOfApp(QStringLiteral("Tallowmere.app"));
    QByteArray flipped = good;
    flipped[flipped.size() / 2] = static_cast<char>(flipped[flipped.size() / 2] ^ 0x10);
    const auto escaping = [&](const test::ZipEntry& entry) {
        return test::craftedZip(root.path() + QStringLiteral("/crafted.zip"),
                                {{QStringLiteral("Tallowmere.app/bin/tallowmere"), "#!/bin/sh\n", false, true}, entry});
    };
    const QString notFound = updateErrorMessage(UpdateError::appNotFound);
    const QString unverified = updateErrorMessage(UpdateError::notVerified);
    const QString escapes = updateErrorMessage(UpdateError::escapingArchive);
    // What is served, with which signature; `program` is where the running copy lives when
    // not in the bundle. Only the first two reach no download.
    struct Case { const char* name; QByteArray archive; int status; QString message;
                  std::optional<QByteArray> signature = {}; QUrl url = {}; QString program = {}; };
    const std::vector<Case> cases = {
        {"not installed as Tallowmere.app", good, 200, QStringLiteral("not installed in a Tallowmere.app"), {}, {},
         QStringLiteral("/usr/bin/tallowmere")},
        {"plain http from another machine", good, 200, updateErrorMessage(UpdateError::insecureAddress), {},
         QUrl(QStringLiteral("http://192.0.2.7/Tallowmere-2.0.zip"))},
        {"404", "missing", 404, updateErrorMessage(UpdateError::badResponse)},
        {"cut off", {}, 0, {}}, // the transport's own words
        {"a flipped bit", flipped, 200, unverified, key.sign(good)},
        {"the signature of another archive", good, 200, unverified, key.sign(flipped)},
        {"no signature", good, 200, unverified, QByteArray()},
        {"signed by another key", good, 200, unverified, test::SigningKey().sign(good)},
        {"not a zip", "PK, but no archive", 200, updateErrorMessage(UpdateError::unzipFailed)},
        {"only hidden bundle", zipOfApp(QStringLiteral(".Tallowmere.app")), 200, notFound},
        {"bundle one folder down", zipOfApp(QStringLiteral("Release/Tallowmere.app")), 200, notFound},
        {"bundle without bin/tallowmere", zipOfApp(QStringLiteral("Tallowmere.app/lib")), 200, notFound},
        {"entry climbing out", escaping({QStringLiteral("Tallowmere.app/../../escaped"), "x"}), 200, escapes},
        {"absolute entry", escaping({root.path() + QStringLiteral("/escaped"), "x"}), 200, escapes},
        {"link to an absolute path", escaping({QStringLiteral("Tallowmere.app/share"), root.path().toUtf8(), true}), 200, escapes},
        {"link climbing out", escaping({QStringLiteral("Tallowmere.app/up"), "../../..", true}), 200, escapes},
    };
    for (const auto& [name, archive, status, message, signature, url, program] : cases) {
        SCOPED_TRACE(name);
        QDir(work).removeRecursively();
        serveArchive(archive, status, signature, url);
        const int downloads = server.requestCount(archivePath);
        const UpdateState state = install(program)->state();
        if (program.isEmpty() && !message.isEmpty())
            EXPECT_EQ(state, UpdateState::failed(message));
        else
            EXPECT_TRUE(state.is(Kind::failed) && state.failureMessage().contains(message) && !state.failureMessage().isEmpty());
        EXPECT_EQ(server.requestCount(archivePath) > downloads, program.isEmpty() && url.isEmpty())
            << "a refusal comes before downloading";
        QCoreApplication::processEvents(); // a quit would be queued behind the failure
        EXPECT_EQ(quitCalls, 0);
        EXPECT_EQ(installedLabel(), QStringLiteral("old"));
        EXPECT_EQ(QDir(work).entryList({QStringLiteral("*.sh")}), QStringList()) << "no script was written";
        if (message == unverified || message == escapes) {
            EXPECT_EQ(QDir(work).entryList(QDir::Dirs | QDir::NoDotAndDotDot).join(u' ').toStdString(), "") << "nothing unpacked";
        }
        EXPECT_FALSE(QFileInfo::exists(root.path() + QStringLiteral("/escaped")));
    }
}

TEST(PrivateFolder, TheRuntimeFolderWhenItIsOursElseAFreshOne)
{
    QTemporaryDir root;
    using test::fileMode;
    const int ownerOnly = 0700;
    const QString run = root.path() + QStringLiteral("/run");
    QDir().mkpath(run + QStringLiteral("/Tallowmere"));
    QFile::setPermissions(run + QStringLiteral("/Tallowmere"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    EXPECT_EQ(makePrivateFolder(run, root.path()), std::optional(run + QStringLiteral("/Tallowmere")));
    EXPECT_EQ(fileMode(run + QStringLiteral("/Tallowmere")), ownerOnly) << "others lose access to an existing one";

    // A link planted where our folder belongs, or no runtime folder at all: a fresh folder.
    const QString planted = root.path() + QStringLiteral("/planted");
    QDir().mkpath(planted);
    QDir().mkpath(root.path() + QStringLiteral("/elsewhere"));
    QFile::link(root.path() + QStringLiteral("/elsewhere"), planted + QStringLiteral("/Tallowmere"));
    for (const QString& runtime : {planted, QString()}) {
        const std::optional<QString> fresh = makePrivateFolder(runtime, root.path());
        ASSERT_TRUE(fresh);
        EXPECT_TRUE(QFileInfo(*fresh).fileName().startsWith(QStringLiteral("Tallowmere-"))) << fresh->toStdString();
        EXPECT_EQ(QFileInfo(*fresh).absolutePath(), root.path());
        EXPECT_EQ(fileMode(*fresh), ownerOnly);
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
