#include "update/InstallScript.h"

#include "tests/support/TestSupport.h"
#include "tests/update/UpdateTestKit.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// The swap itself (waiting, backup, copy, start) is run end to end by the installation tests;
// here the copy fails for real and the old copy must come back.
TEST(InstallScript, RestoresAndStartsTheOldCopyWhenTheCopyFails)
{
    QTemporaryDir root;
    const QString base = root.path() + QStringLiteral("/Program Files $HOME `id` \"x\" {NEW}");
    const QString app = base + QStringLiteral("/Tallowmere.app"), newApp = base + QStringLiteral("/new/Tallowmere.app");
    const QString marker = root.path() + QStringLiteral("/started");
    test::makeFakeApp(app, QStringLiteral("old"), marker);
    test::makeFakeApp(newApp, QStringLiteral("new"), marker);
    // Past the file-size limit set below, so the copy dies half-way.
    test::writeFile(newApp, QStringLiteral("share/big.bin"), QByteArray(256 * 1024, 'x'));
    // A stale backup from an earlier run must not come back instead of the current copy.
    test::makeFakeApp(app + QStringLiteral(".old"), QStringLiteral("stale"), marker);
    const qint64 gonePid = test::StandIn().pid; // a program that has already quit
    test::writeFile(root.path(), QStringLiteral("install.sh"), installScriptText(gonePid, app, newApp).toUtf8());

    QProcess bash;
    bash.start(QStringLiteral("/bin/bash"), {QStringLiteral("-c"), QStringLiteral("ulimit -f 64; exec /bin/bash \"$0\""),
                                             root.path() + QStringLiteral("/install.sh")});
    ASSERT_TRUE(bash.waitForFinished(30'000));
    ASSERT_TRUE(test::waitUntil([&] { return test::markerLines(marker).size() == 2; }, 15'000));
    EXPECT_EQ(test::markerLines(marker), QStringList({QStringLiteral("old"), app + QStringLiteral("/bin/tallowmere")}));
    EXPECT_EQ(test::readFile(app + QStringLiteral("/share/label.txt")), "old");
    EXPECT_FALSE(QFileInfo::exists(app + QStringLiteral("/share/big.bin"))) << "the half copy is gone";
    EXPECT_FALSE(QFileInfo::exists(app + QStringLiteral("/Tallowmere.app"))) << "nothing nested inside";
    EXPECT_FALSE(QFileInfo::exists(app + QStringLiteral(".old")));
}

} // namespace
} // namespace tallowmere
