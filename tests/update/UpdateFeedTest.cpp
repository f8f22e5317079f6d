#include "update/AppcastParser.h"
#include "update/UpdateService.h"

#include "tests/support/TestSupport.h"
#include "tests/update/UpdateTestKit.h"
#include "update/UpdateError.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <numeric>

namespace tallowmere {
namespace {

using Kind = UpdateState::Kind;
const QString feedPath = QStringLiteral("/tallowmere/appcast.xml");
const QUrl archiveUrl(QStringLiteral("https://downloads.tallowmere.invalid/Tallowmere.zip"));

AppcastParser::Result parse(const QByteArray& build, const QByteArray& url = "https://x.invalid/a.zip")
{
    return AppcastParser::parse("<u><version>1</version><build>" + build + "</build><url>" + url + "</url></u>");
}

TEST(AppcastParser, AcceptsSignedDecimalBuildsAndValidAddressesOnly)
{
    for (const auto& [text, build] : {std::pair<QByteArray, qint64>{"+12", 12}, {"-3", -3}, {" \n 17 \n", 17},
                                      {"9223372036854775807", 9223372036854775807LL}})
        EXPECT_EQ(std::get<AvailableUpdate>(parse(text)).build, build) << text.toStdString();
    for (const char* bad : {"17a", "", "+", "1 7", "0x11", "1.5", "--4", "9223372036854775808", "\xd9\xa3", "\xff"})
        EXPECT_EQ(std::get<UpdateError>(parse(bad)), UpdateError::malformedFeed) << bad;
    for (const char* bad : {" \n ", "https://x.invalid/with space.zip", "http://[::1"})
        EXPECT_EQ(std::get<UpdateError>(parse("5", bad)), UpdateError::malformedFeed) << bad;
    EXPECT_EQ(std::get<UpdateError>(AppcastParser::parse("<u><build>5</build></u>")), UpdateError::malformedFeed);
    EXPECT_EQ(std::get<UpdateError>(AppcastParser::parse("")), UpdateError::malformedFeed);
}

TEST(AppcastParser, AppendsToTheElementOpenedLast)
{
    const auto update = std::get<AvailableUpdate>(AppcastParser::parse(
        "<r><title>build 99</title><version>1.2</version><version>.3</version><build>5</build><url>"
        "https://x.invalid/a.zip</url><releaseNotes>Fixes<![CDATA[ \xff\xfe]]><b>bold</b> more</releaseNotes></r>"));
    EXPECT_EQ(update.version, QStringLiteral("1.2.3"));
    EXPECT_EQ(update.build, 5);
    EXPECT_EQ(update.releaseNotes, QStringLiteral("Fixes")) << "a badly encoded CDATA block is dropped; text after a nested element belongs to it";
}

class UpdateCheck : public ::testing::Test {
protected:
    std::unique_ptr<UpdateService> service(qint64 runningBuild)
    {
        return std::make_unique<UpdateService>(UpdateEnvironment{server.url(feedPath), runningBuild, {}, {}, 0, {}, {}, {}});
    }
    UpdateState check(UpdateService& service, bool userInitiated)
    {
        service.checkForUpdates(userInitiated);
        EXPECT_TRUE(test::waitUntil([&] { return !service.state().is(Kind::checking); }, 20'000));
        return service.state();
    }
    UpdateState serveAndCheck(const QByteArray& feed, int status = 200, qint64 runningBuild = 42)
    {
        server.serve(feedPath, feed, status);
        return check(*service(runningBuild), true);
    }
    test::LoopbackHttpServer server;
};

TEST_F(UpdateCheck, OffersOnlyAHigherBuildFromTheFeed)
{
    EXPECT_EQ(serveAndCheck(test::feedXml(42, archiveUrl, "0.1")), UpdateState::upToDate()) << "versions don't count";
    QByteArray signature(64, '\0');
    std::iota(signature.begin(), signature.end(), 0);
    const UpdateState offered = serveAndCheck(test::fixture("update/feed-good.xml"));
    EXPECT_EQ(offered, UpdateState::available({QStringLiteral("0.2.0"), 43,
                                               QUrl(QStringLiteral("https://downloads.tallowmere.invalid/Tallowmere-0.2.0.zip")),
                                               QStringLiteral("Faster network history & a new battery page."),
                                               QStringLiteral("Debian 12"), signature}));
    const UpdateState trimmed = serveAndCheck(test::fixture("update/feed-whitespace-cdata.xml"), 200, 0);
    EXPECT_EQ(trimmed, UpdateState::available({QStringLiteral("0.3.0-beta"), 17,
                                               QUrl(QStringLiteral("https://downloads.tallowmere.invalid/"
                                                                   "Tallowmere-0.3.0.zip?channel=beta&arch=x86_64")),
                                               QStringLiteral("<ul><li>Keeps the <b>lid</b> awake</li></ul>"),
                                               std::nullopt, {}}));
}

TEST_F(UpdateCheck, ReportsFailuresOnlyWhenTheUserAsked)
{
    const QString badResponse = updateErrorMessage(UpdateError::badResponse);
    const QString malformed = updateErrorMessage(UpdateError::malformedFeed);
    EXPECT_EQ(serveAndCheck("gone", 404), UpdateState::failed(badResponse));
    EXPECT_EQ(serveAndCheck(test::feedXml(99, archiveUrl), 503), UpdateState::failed(badResponse));
    EXPECT_EQ(serveAndCheck(test::fixture("update/feed-malformed.xml")), UpdateState::failed(malformed));
    EXPECT_EQ(serveAndCheck(test::feedXml(17, archiveUrl).replace("17", "17a")), UpdateState::failed(malformed));
    const UpdateState cutOff = serveAndCheck({}, 0);
    ASSERT_TRUE(cutOff.is(Kind::failed));
    EXPECT_FALSE(cutOff.failureMessage().isEmpty());
    EXPECT_NE(cutOff.failureMessage(), badResponse) << "a transport error keeps its own description";

    for (int status : {0, 404}) {
        server.serve(feedPath, "<feed>", status);
        auto silent = service(42);
        QSignalSpy changes(silent.get(), &UpdateService::stateChanged);
        EXPECT_EQ(check(*silent, false), UpdateState::idle());
        EXPECT_EQ(changes.count(), 2) << "checking, then idle, with no failure shown between";
    }
}

// No feed compiled in: nobody is asked. Plain HTTP only from this machine.
TEST_F(UpdateCheck, AsksOnlyAConfiguredFeedOverASafeScheme)
{
    for (bool userInitiated : {false, true}) {
        UpdateService unconfigured(UpdateEnvironment{});
        unconfigured.checkForUpdates(userInitiated);
        EXPECT_EQ(unconfigured.state(), userInitiated ? UpdateState::failed(updateErrorMessage(UpdateError::noFeed))
                                                      : UpdateState::idle());
        UpdateEnvironment plainHttp;
        plainHttp.feedUrl = QUrl(QStringLiteral("http://updates.example.org/appcast.xml"));
        UpdateService plain(plainHttp);
        plain.checkForUpdates(userInitiated);
        EXPECT_EQ(plain.state(), userInitiated ? UpdateState::failed(updateErrorMessage(UpdateError::insecureAddress))
                                               : UpdateState::idle());
    }
    for (const char* allowed : {"https://updates.example.org/a.xml", "http://127.0.0.1:8/a", "http://127.200.0.9/a",
                                "http://LOCALHOST/a", "http://[::1]:80/a", "http://[::ffff:7f00:1]/a"})
        EXPECT_TRUE(isAllowedUpdateAddress(QUrl(QString::fromLatin1(allowed)))) << allowed;
    for (const char* refused : {"http://updates.example.org/a", "http://128.0.0.1/a", "http://127.0.0.1.example.org/a",
                                "ftp://127.0.0.1/a", "file:///tmp/a.xml", "https:///a", ""})
        EXPECT_FALSE(isAllowedUpdateAddress(QUrl(QString::fromLatin1(refused)))) << refused;
}

TEST_F(UpdateCheck, RefusesToOverlapAndAnnouncesOnlyRealChanges)
{
    server.serve(feedPath, test::feedXml(43, archiveUrl));
    auto updates = service(42);
    QSignalSpy changes(updates.get(), &UpdateService::stateChanged);
    updates->checkForUpdates(false);
    updates->checkForUpdates(true);
    ASSERT_TRUE(test::waitUntil([&] { return updates->state().is(Kind::available); }, 20'000));
    for (const UpdateState& busy : {UpdateState::downloading(0), UpdateState::installing()}) {
        updates->setState(busy);
        updates->setState(busy);
        updates->checkForUpdates(true);
        EXPECT_EQ(updates->state(), busy);
    }
    EXPECT_EQ(server.requestCount(feedPath), 1);
    EXPECT_EQ(changes.count(), 4);
    updates->setState(UpdateState::failed(QStringLiteral("a")));
    EXPECT_TRUE(check(*updates, true).is(Kind::available)) << "after a failure the user can check again";
}

} // namespace
} // namespace tallowmere
