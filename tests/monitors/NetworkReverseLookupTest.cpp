#include "monitors/NetworkReverseLookup.h"

#include "tests/support/ManualScheduler.h"
#include "tests/support/TestSupport.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>

using namespace tallowmere;

TEST(ReverseLookups, AnswersArriveOnTheThreadThatAsked)
{
    QHash<QString, std::optional<QString>> answers;
    ReverseLookups lookups(
        [](const QString& ip) { return ip == "192.0.2.1" ? std::optional<QString>("a.example") : std::nullopt; },
        [&](const QString& ip, const std::optional<QString>& name) {
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
            answers.insert(ip, name);
        });
    lookups.start("192.0.2.1");
    lookups.start("192.0.2.2");
    ASSERT_TRUE(test::waitUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers.value("192.0.2.1"), "a.example");
    EXPECT_EQ(answers.value("192.0.2.2"), std::nullopt);
}

// At exit the owner goes while lookups still wait on a resolver: destruction must not wait for
// them, lookups not yet begun are skipped, and late answers are dropped, never posted.
TEST(ReverseLookups, DestructionLeavesSlowLookupsBehindAndDeliversNothing)
{
    QSemaphore resolver;
    std::atomic<int> asked = 0;
    int delivered = 0;
    {
        ReverseLookups lookups(
            [&](const QString&) {
                ++asked;
                resolver.acquire();
                return std::optional<QString>("late.example");
            },
            [&](const QString&, const std::optional<QString>&) { ++delivered; });
        for (int i = 0; i < 8; ++i)
            lookups.start(QString("192.0.2.%1").arg(i));
    }
    resolver.release(8);
    test::finishDetachedWork();
    EXPECT_EQ(delivered, 0);
    EXPECT_LE(asked.load(), 4) << "at most the pool's four threads had begun";
}
