#include "power/KeepAwakeService.h"

#include "core/PreferencesStore.h"

#include "tests/power/KeepAwakeTestSupport.h"
#include "tests/support/TestSupport.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

using namespace tallowmere;
using namespace std::chrono_literals;

// The locks as a login manager and a screen saver on a private bus see them.
namespace {
struct KeepAwakeLocksTest : ::testing::Test {
    QTemporaryDir dir;
    PreferencesStore store{dir.path() + QStringLiteral("/preferences.json")};
    std::shared_ptr<test::ManualClock> clock = std::make_shared<test::ManualClock>();
    test::InhibitBus bus;

    std::unique_ptr<KeepAwakeService> startService()
    {
        if (!bus.start())
            return nullptr;
        auto service = std::make_unique<KeepAwakeService>(store, bus.connection(), bus.connection(), clock);
        service->start();
        return service;
    }
    bool locksBecome(const char* expected)
    {
        return test::waitUntil([&] { return bus.heldLocks().join(u' ') == QLatin1StringView(expected); });
    }
};
} // namespace

TEST_F(KeepAwakeLocksTest, EachModeHoldsItsLocksUntilExpiredOrDestroyed)
{
    auto service = startService();
    ASSERT_TRUE(service);
    EXPECT_TRUE(locksBecome("idle sleep"));
    EXPECT_NE(service->idleInhibitorId(), 0u);
    EXPECT_EQ(bus.screenSaverCalls("Inhibit"), 1);

    service->setMode(KeepAwakeMode::displayOff);
    service->start();
    EXPECT_TRUE(locksBecome("sleep"));
    EXPECT_EQ(service->idleInhibitorId(), 0u);
    EXPECT_EQ(bus.screenSaverCalls("UnInhibit 4711"), 1);

    service->setMode(KeepAwakeMode::lidClosed);
    service->start();
    EXPECT_TRUE(locksBecome("handle-lid-switch sleep"));
    clock->advance(30min);
    EXPECT_TRUE(locksBecome(""));
    EXPECT_EQ(service->lidSwitchInhibitorId(), 0u);

    service->start();
    EXPECT_TRUE(locksBecome("handle-lid-switch sleep"));
    service.reset();
    EXPECT_TRUE(locksBecome(""));
}

TEST_F(KeepAwakeLocksTest, QuittingTheApplicationLetsGo)
{
    const auto service = startService();
    ASSERT_TRUE(service);
    EXPECT_TRUE(locksBecome("idle sleep"));
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    EXPECT_FALSE(service->isActive());
    EXPECT_EQ(bus.screenSaverCalls("UnInhibit"), 1);
    EXPECT_TRUE(locksBecome(""));
}
