#include "core/Detached.h"
#include "core/LoopTask.h"

#include "tests/support/TestSupport.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

using namespace tallowmere;
using namespace std::chrono_literals;

TEST(LoopTask, RunsAtOnceThenEveryPeriodUntilCancelled)
{
    int rounds = 0;
    auto loop = LoopTask::start(10ms, [&] { ++rounds; });
    EXPECT_EQ(rounds, 1);
    ASSERT_TRUE(test::waitUntil([&] { return rounds >= 3; }));
    loop->cancel();
    EXPECT_FALSE(loop->isRunning());
    const int atCancel = rounds;
    QTest::qWait(50);
    EXPECT_EQ(rounds, atCancel);
}

TEST(LoopTask, AsyncBodySleepsOnlyAfterItsResultIsApplied)
{
    int started = 0;
    int applied = 0;
    auto loop = LoopTask::startAsync(5ms, [&](LoopTask::Done done) {
        ++started;
        runDetached(QCoreApplication::instance(),
                    [] { QThread::msleep(20); return 1; },
                    [&, done](int value) { applied += value; done(); });
    });
    ASSERT_TRUE(test::waitUntil([&] { return applied >= 3; }));
    // Never two collections in flight at once.
    EXPECT_LE(started - applied, 1);
    loop.reset();
}

TEST(LoopTask, DestroyingTheLoopIgnoresALateDone)
{
    LoopTask::Done pending;
    int rounds = 0;
    auto loop = LoopTask::startAsync(1ms, [&](LoopTask::Done done) { ++rounds; pending = done; });
    loop.reset();
    pending();
    QTest::qWait(20);
    EXPECT_EQ(rounds, 1);
}
