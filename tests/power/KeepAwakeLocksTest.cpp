#include "power/KeepAwakeService.h"

#include "app/core/SignalQuit.h"
#include "app/settings/PreferencesStore.h"

#include "tests/power/KeepAwakeTestSupport.h"
#include "tests/support/TestSupport.h"

#include <QCoreApplication>
#include <QProcess>
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

    std::unique_ptr<KeepAwakeService> makeService(KeepAwakeMode mode)
    {
        auto service = std::make_unique<KeepAwakeService>(store, bus.connection(), bus.connection(), clock);
        service->setMode(mode);
        return service;
    }
    bool locksBecome(const QStringList& expected)
    {
        return test::waitUntil([&] { return bus.heldLocks() == expected; }, 5000);
    }
};

const QStringList none;
const QStringList sleepOnly{QStringLiteral("sleep")};
const QStringList sleepAndIdle{QStringLiteral("idle"), QStringLiteral("sleep")};
const QStringList sleepAndLid{QStringLiteral("handle-lid-switch"), QStringLiteral("sleep")};
} // namespace

TEST_F(KeepAwakeLocksTest, EachModeHoldsItsLocksUntilStopped)
{
    ASSERT_TRUE(bus.start(true, true));
    const auto service = makeService(KeepAwakeMode::displayOn);
    service->start();
    EXPECT_TRUE(locksBecome(sleepAndIdle)) << bus.heldLocks().join(u',').toStdString();
    EXPECT_NE(service->systemAssertionID(), 0u);
    EXPECT_NE(service->displayAssertionID(), 0u);
    EXPECT_NE(service->systemAssertionID(), service->displayAssertionID());
    EXPECT_EQ(service->clamshellConnection(), 0u);
    EXPECT_EQ(bus.screenSaverCalls(QStringLiteral("Inhibit")).size(), 1u);

    // A new mode takes effect at the next start, which lets go of the display lock.
    service->setMode(KeepAwakeMode::displayOff);
    EXPECT_TRUE(locksBecome(sleepAndIdle));
    service->start();
    EXPECT_TRUE(locksBecome(sleepOnly));
    EXPECT_EQ(service->displayAssertionID(), 0u);
    const auto uninhibits = bus.screenSaverCalls(QStringLiteral("UnInhibit"));
    ASSERT_EQ(uninhibits.size(), 1u);
    EXPECT_EQ(uninhibits[0].value(0).toUInt(), 4711u);

    service->setMode(KeepAwakeMode::lidClosed);
    service->start();
    EXPECT_TRUE(locksBecome(sleepAndLid));
    EXPECT_NE(service->clamshellConnection(), 0u);

    service->stop();
    EXPECT_TRUE(locksBecome(none));
    EXPECT_EQ(service->systemAssertionID(), 0u);
    EXPECT_EQ(service->clamshellConnection(), 0u);
}

TEST_F(KeepAwakeLocksTest, ExpiryAndDestructionLetGo)
{
    ASSERT_TRUE(bus.start(true, true));
    auto service = makeService(KeepAwakeMode::displayOn);
    service->setDuration(KeepAwakeDuration::tenMinutes);
    service->start();
    EXPECT_TRUE(locksBecome(sleepAndIdle));
    clock->advance(600s);
    EXPECT_FALSE(service->isActive());
    EXPECT_TRUE(locksBecome(none));
    EXPECT_EQ(bus.screenSaverCalls(QStringLiteral("UnInhibit")).size(), 1u);

    service->setMode(KeepAwakeMode::lidClosed);
    service->start();
    EXPECT_TRUE(locksBecome(sleepAndLid));
    service.reset();
    EXPECT_TRUE(locksBecome(none));
}

TEST_F(KeepAwakeLocksTest, QuittingTheApplicationLetsGo)
{
    ASSERT_TRUE(bus.start(true, true));
    const auto service = makeService(KeepAwakeMode::displayOn);
    service->setDuration(KeepAwakeDuration::infinite);
    service->start();
    EXPECT_TRUE(locksBecome(sleepAndIdle));

    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    EXPECT_FALSE(service->isActive());
    EXPECT_EQ(bus.screenSaverCalls(QStringLiteral("UnInhibit")).size(), 1u);
    EXPECT_TRUE(locksBecome(none));
}

TEST_F(KeepAwakeLocksTest, MissingServicesLeaveIdentifiersAtZero)
{
    // A bus with nobody on it.
    ASSERT_TRUE(bus.start(false, false));
    auto service = makeService(KeepAwakeMode::displayOn);
    service->start();
    EXPECT_TRUE(service->isActive());
    EXPECT_EQ(service->systemAssertionID(), 0u);
    EXPECT_EQ(service->displayAssertionID(), 0u);
    EXPECT_EQ(service->statusText(), QStringLiteral("Active · 30m left"));
    service->stop();
    EXPECT_FALSE(service->isActive());
}

TEST_F(KeepAwakeLocksTest, ScreenSaverAloneStillKeepsTheDisplayOn)
{
    ASSERT_TRUE(bus.start(false, true));
    const auto service = makeService(KeepAwakeMode::displayOn);
    service->start();
    EXPECT_EQ(service->systemAssertionID(), 0u);
    EXPECT_NE(service->displayAssertionID(), 0u);
    service->stop();
    EXPECT_EQ(bus.screenSaverCalls(QStringLiteral("UnInhibit")).size(), 1u);
}

// Run as a child process by the test below: holds the display locks until SIGTERM.
TEST(KeepAwakeChild, HoldsLocksUntilTerminated)
{
    const QByteArray address = qgetenv("TALLOWMERE_TEST_KEEPAWAKE_BUS");
    if (address.isEmpty())
        GTEST_SKIP() << "only run by KeepAwakeLocksTest.TerminationLetsGo";
    QDBusConnection bus = QDBusConnection::connectToBus(QString::fromUtf8(address), QStringLiteral("child"));
    QTemporaryDir dir;
    PreferencesStore store(dir.path() + QStringLiteral("/preferences.json"));
    SignalQuit signalQuit;
    KeepAwakeService service(store, bus, bus);
    service.setMode(KeepAwakeMode::displayOn);
    service.start();
    std::printf("locks-held\n");
    std::fflush(stdout);
    QCoreApplication::exec();
    EXPECT_FALSE(service.isActive());
}

TEST_F(KeepAwakeLocksTest, TerminationLetsGo)
{
    ASSERT_TRUE(bus.start(true, true));
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("TALLOWMERE_TEST_KEEPAWAKE_BUS"), bus.address());
    child.setProcessEnvironment(env);
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--gtest_filter=KeepAwakeChild.*")});
    ASSERT_TRUE(test::waitUntil([&] { return child.readAllStandardOutput().contains("locks-held"); }, 10000));
    EXPECT_TRUE(locksBecome(sleepAndIdle));

    child.terminate();
    ASSERT_TRUE(child.waitForFinished(10000));
    EXPECT_EQ(child.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(child.exitCode(), 0);
    // The screen saver forgets nothing on its own when a client dies, so this call is the
    // proof that the locks were handed back in an orderly way.
    EXPECT_EQ(bus.screenSaverCalls(QStringLiteral("UnInhibit")).size(), 1u);
    EXPECT_TRUE(locksBecome(none));
}
