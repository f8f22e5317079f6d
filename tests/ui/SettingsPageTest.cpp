#include "WindowTestKit.h"

#include "ui/components/Switch.h"
#include "ui/pages/SettingsPage.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QPushButton>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

struct SettingsPageTest : ::testing::Test {
    test::WindowTestKit kit;

    std::unique_ptr<SettingsPage> makePage(const QString& autostartDir)
    {
        return std::make_unique<SettingsPage>(Theme::lightTheme(), kit.settings, kit.server, kit.updates,
                                              LaunchAtLogin(autostartDir, QStringLiteral("tallowmere")));
    }
    template <class T>
    static T* child(const QWidget& page, const QString& name)
    {
        T* found = page.findChild<T*>(name);
        EXPECT_NE(found, nullptr) << name.toStdString();
        return found;
    }
};

UpdateState offer(const QString& version)
{
    AvailableUpdate update;
    update.version = version;
    return UpdateState::available(update);
}

} // namespace

TEST(SettingsTexts, EveryUpdateStateAndTheMissingVersion)
{
    const auto section = [](UpdateState state) {
        return makeSettingsTexts({.update = std::move(state), .version = QStringLiteral("2.0"), .build = QStringLiteral("20")}).update;
    };
    EXPECT_EQ(section(UpdateState::idle()), (UpdateSection{"Version 2.0", std::nullopt, "Check for Updates"}));
    EXPECT_EQ(section(UpdateState::upToDate()), (UpdateSection{"You're up to date.", std::nullopt, "Check for Updates"}));
    EXPECT_EQ(section(UpdateState::checking()), (UpdateSection{"Checking for updates\u2026", std::nullopt, std::nullopt, true}));
    EXPECT_EQ(section(offer(QStringLiteral("2.1"))), (UpdateSection{"Version 2.1 is available", "You have 2.0", "Update Now"}));
    EXPECT_EQ(section(UpdateState::downloading(0.5)).headline, "Downloading update\u2026");
    EXPECT_EQ(section(UpdateState::installing()).headline, "Installing\u2026 the app will relaunch.");
    EXPECT_EQ(section(UpdateState::failed(QStringLiteral("The download failed."))),
              (UpdateSection{"The download failed.", std::nullopt, "Try Again"}));

    const SettingsTexts unknown = makeSettingsTexts({});
    EXPECT_EQ(unknown.version, "\u2014");
    EXPECT_EQ(unknown.build, "\u2014");
    EXPECT_EQ(unknown.buildLine, "Build \u2014");
}

TEST(SettingsTexts, ClientConfigurationAndServerStatus)
{
    EXPECT_EQ(mcpClientConfig(8765), "{\n  \"mcpServers\": {\n    \"system-stats\": {\n      \"url\": "
                                     "\"http://127.0.0.1:8765/mcp\"\n    }\n  }\n}");
    EXPECT_EQ(makeSettingsTexts({.serverRunning = false}).serverStatus, "Starting\u2026");
    EXPECT_EQ(makeSettingsTexts({.serverRunning = true}).serverStatus, "Running");
}

TEST_F(SettingsPageTest, ServerAndUpdateBlocksFollowTheirServices)
{
    auto page = makePage(kit.dir.filePath(QStringLiteral("autostart")));
    page->show();
    auto* block = child<QWidget>(*page, QStringLiteral("serverBlock"));
    EXPECT_FALSE(block->isVisible());

    child<Switch>(*page, QStringLiteral("switch:Enable MCP Server"))->click();
    EXPECT_TRUE(kit.settings.localServerEnabled());
    EXPECT_TRUE(block->isVisible());
    kit.server.start();
    ASSERT_TRUE(kit.server.isRunning());
    const QString endpoint = child<QLabel>(*page, QStringLiteral("endpoint"))->text();
    EXPECT_EQ(endpoint, QStringLiteral("http://127.0.0.1:%1/mcp").arg(kit.server.listeningPort()));
    EXPECT_TRUE(child<QLabel>(*page, QStringLiteral("serverStatus"))->text().endsWith("Running"));

    child<QPushButton>(*page, QStringLiteral("copyConfig"))->click();
    const QString copied = QGuiApplication::clipboard()->text();
    EXPECT_EQ(copied, child<QLabel>(*page, QStringLiteral("clientConfig"))->text());
    EXPECT_TRUE(copied.contains(QStringLiteral("\"url\": \"") + endpoint + u'"'));
    kit.server.stop();

    kit.settings.setLocalServerEnabled(false);
    EXPECT_FALSE(block->isVisible());
    EXPECT_FALSE(child<Switch>(*page, QStringLiteral("switch:Enable MCP Server"))->isChecked());

    // The update section follows the service's state.
    auto* headline = child<QLabel>(*page, QStringLiteral("updateHeadline"));
    auto* button = child<QPushButton>(*page, QStringLiteral("updateButton"));
    kit.updates.setState(offer(QStringLiteral("2.1")));
    EXPECT_EQ(headline->text() + u'/' + button->text(), "Version 2.1 is available/Update Now");
    kit.updates.setState(UpdateState::installing());
    EXPECT_FALSE(button->isVisible());
}

TEST_F(SettingsPageTest, LaunchAtLoginShowsWhatIsReallySetUp)
{
    auto page = makePage(kit.dir.filePath(QStringLiteral("autostart")));
    auto* login = child<Switch>(*page, QStringLiteral("switch:Launch at Login"));
    EXPECT_FALSE(login->isChecked());
    login->click();
    EXPECT_TRUE(login->isChecked());
    EXPECT_TRUE(QFile::exists(kit.dir.filePath(QStringLiteral("autostart/tallowmere.desktop"))));

    // An autostart folder that cannot be made: the switch falls back to off, silently.
    QFile blocker(kit.dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    auto broken = makePage(blocker.fileName() + QStringLiteral("/autostart"));
    auto* failing = child<Switch>(*broken, QStringLiteral("switch:Launch at Login"));
    failing->click();
    EXPECT_FALSE(failing->isChecked());
}
