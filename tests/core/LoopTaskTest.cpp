#include "core/Detached.h"
#include "core/LoopTask.h"

#include "tests/support/ManualScheduler.h"
#include "tests/support/TestSupport.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

using namespace tallowmere;
using namespace std::chrono_literals;

TEST(LoopTask, RunsAtOnceThenEveryPeriodUntilCancelled)
{
    auto scheduler = std::make_shared<test::ManualScheduler>();
    int rounds = 0;
    auto loop = LoopTask::start(1000ms, [&] { ++rounds; }, scheduler);
    EXPECT_EQ(rounds, 1);
    scheduler->advance(999ms);
    EXPECT_EQ(rounds, 1);
    scheduler->advance(1ms);
    EXPECT_EQ(rounds, 2);
    scheduler->advance(3000ms);
    EXPECT_EQ(rounds, 5);

    // A new period applies from the next sleep; the one already begun keeps its length.
    loop->setPeriod(250ms);
    scheduler->advance(2000ms);
    EXPECT_EQ(rounds, 6 + 4);

    loop->cancel();
    EXPECT_FALSE(loop->isRunning());
    EXPECT_EQ(scheduler->pending(), 0u);
    scheduler->advance(10s);
    EXPECT_EQ(rounds, 10);
}

TEST(LoopTask, AsyncBodySleepsOnlyAfterItsResultIsApplied)
{
    auto scheduler = std::make_shared<test::ManualScheduler>();
    int started = 0;
    int applied = 0;
    auto loop = LoopTask::startAsync(
        1000ms,
        [&](LoopTask::Done done) {
            ++started;
            runDetached(QCoreApplication::instance(), [] { return 1; }, [&, done](int value) {
                applied += value;
                done();
            });
        },
        scheduler);
    // However far time goes, the next round waits for the result of this one.
    scheduler->advance(5s);
    EXPECT_EQ(started, 1);
    test::finishDetachedWork();
    EXPECT_EQ(applied, 1);
    // The period counts from the moment the result came in.
    scheduler->advance(999ms);
    EXPECT_EQ(started, 1);
    scheduler->advance(1ms);
    EXPECT_EQ(started, 2);
    test::finishDetachedWork();
    EXPECT_EQ(applied, 2);
}

TEST(LoopTask, LateOrRepeatedDoneIsIgnored)
{
    auto scheduler = std::make_shared<test::ManualScheduler>();
    LoopTask::Done pending;
    int rounds = 0;
    auto loop = LoopTask::startAsync(1000ms, [&](LoopTask::Done done) { ++rounds; pending = done; }, scheduler);
    pending();
    pending(); // a second call arms no second sleep
    EXPECT_EQ(scheduler->pending(), 1u);
    scheduler->advance(1000ms);
    EXPECT_EQ(rounds, 2);

    loop.reset();
    pending();
    scheduler->advance(10s);
    EXPECT_EQ(rounds, 2);
}

// The real scheduler: a short loop really runs again, on Qt's timers.
TEST(LoopTask, RealSchedulerRunsOnTheEventLoop)
{
    int rounds = 0;
    auto loop = LoopTask::start(1ms, [&] { ++rounds; });
    EXPECT_TRUE(test::waitUntil([&] { return rounds >= 3; }));
}
