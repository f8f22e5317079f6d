#include "app/SingleInstance.h"

#include "tests/support/TestSupport.h"

#include <QLocalServer>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

TEST(SingleInstance, SecondStartHandsOverAReopenRequest)
{
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("instance.socket"));
    SingleInstance first(name);
    EXPECT_FALSE(first.handOverToRunningInstance()) << "nobody runs yet";
    ASSERT_TRUE(first.listen());
    QSignalSpy reopen(&first, &SingleInstance::reopenRequested);

    // The second start's hand-over blocks, so it runs on a worker while this thread serves.
    bool handedOver = false;
    std::thread second([&] {
        SingleInstance other(name);
        handedOver = other.handOverToRunningInstance();
    });
    ASSERT_TRUE(test::waitUntil([&] { return reopen.count() == 1; }));
    second.join();
    EXPECT_TRUE(handedOver);
}

TEST(SingleInstance, StaleSocketFromACrashedRunIsReplaced)
{
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("instance.socket"));
    {
        // A listener that goes away without cleaning up leaves its socket file behind.
        QLocalServer crashed;
        crashed.setSocketOptions(QLocalServer::UserAccessOption);
        ASSERT_TRUE(crashed.listen(name));
        crashed.close();
        test::writeFile(dir.path(), QStringLiteral("instance.socket"), "");
    }
    SingleInstance fresh(name);
    EXPECT_FALSE(fresh.handOverToRunningInstance());
    QString error;
    EXPECT_TRUE(fresh.listen(&error)) << error.toStdString();
}
