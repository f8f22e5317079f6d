#include "app/SingleInstance.h"

#include "tests/support/TestSupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

using namespace tallowmere;

// flock locks belong to open files, so two claims in one process contend as two processes would.
TEST(SingleInstance, OneClaimAtATimeAndTheLaterStartHandsOverAReopen)
{
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("instance.socket"));
    // A copy that ended without cleaning up leaves its socket file behind.
    test::writeFile(dir.path(), QStringLiteral("instance.socket"), "");
    auto first = std::make_unique<SingleInstance>(name);
    QString error;
    ASSERT_EQ(first->claim(&error), SingleInstance::Claim::ours) << error.toStdString();
    QSignalSpy reopen(first.get(), &SingleInstance::reopenRequested);

    SingleInstance second(name);
    EXPECT_EQ(second.claim(), SingleInstance::Claim::anotherRuns);
    // The hand-over blocks, so it runs on a worker while this thread serves.
    bool handedOver = false;
    std::thread worker([&] { handedOver = second.handOverReopen(); });
    ASSERT_TRUE(test::waitUntil([&] { return reopen.count() == 1; }));
    worker.join();
    EXPECT_TRUE(handedOver);

    first.reset();
    SingleInstance third(name);
    EXPECT_EQ(third.claim(), SingleInstance::Claim::ours);
}

TEST(SingleInstance, UnwritableFolderLeavesTheClaimUnavailable)
{
    SingleInstance nowhere(QStringLiteral("/nonexistent/instance.socket"));
    QString error;
    EXPECT_EQ(nowhere.claim(&error), SingleInstance::Claim::unavailable);
    EXPECT_TRUE(error.contains(QStringLiteral("/nonexistent/instance.socket.lock")));
    EXPECT_FALSE(nowhere.handOverReopen());
}
