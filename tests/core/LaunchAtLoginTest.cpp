#include "core/LaunchAtLogin.h"

#include "tests/support/TestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

TEST(LaunchAtLogin, RegisterWritesAnEntryThatRunsTheProgramAndUnregisterRemovesIt)
{
    QTemporaryDir dir;
    const QString autostart = dir.filePath(QStringLiteral("config/autostart"));
    LaunchAtLogin login(autostart, QStringLiteral("/opt/My Apps/Tallowmere.app/bin/tallowmere"));
    EXPECT_EQ(login.status(), LaunchAtLogin::Status::notRegistered);

    QString error;
    ASSERT_TRUE(login.registerItem(&error)) << error.toStdString();
    EXPECT_EQ(login.status(), LaunchAtLogin::Status::enabled);
    const QByteArray entry = test::readFile(login.entryPath());
    EXPECT_TRUE(entry.startsWith("[Desktop Entry]"));
    // A path with blanks must reach the launcher as one argument.
    EXPECT_TRUE(entry.contains("Exec=\"/opt/My Apps/Tallowmere.app/bin/tallowmere\""));

    ASSERT_TRUE(login.unregisterItem(&error)) << error.toStdString();
    EXPECT_EQ(login.status(), LaunchAtLogin::Status::notRegistered);
    EXPECT_TRUE(login.unregisterItem()) << "removing what is not there is not a failure";
}

TEST(LaunchAtLogin, HiddenEntryCountsAsOffAndAnUnwritableFolderFails)
{
    QTemporaryDir dir;
    test::writeFile(dir.path(), QStringLiteral("autostart/tallowmere.desktop"),
                    "[Desktop Entry]\nType=Application\nExec=tallowmere\nHidden=true\n");
    EXPECT_EQ(LaunchAtLogin(dir.filePath(QStringLiteral("autostart")), QStringLiteral("tallowmere")).status(),
              LaunchAtLogin::Status::notRegistered);

    // A file where the folder should be: registration fails with a reason, status stays off.
    test::writeFile(dir.path(), QStringLiteral("blocked"), "x");
    LaunchAtLogin blocked(dir.filePath(QStringLiteral("blocked/autostart")), QStringLiteral("tallowmere"));
    QString error;
    EXPECT_FALSE(blocked.registerItem(&error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(blocked.status(), LaunchAtLogin::Status::notRegistered);
}
