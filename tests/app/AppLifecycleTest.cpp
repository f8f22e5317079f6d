#include "app/AppLifecycle.h"
#include "app/AppServices.h"
#include "app/ForegroundSeam.h"
#include "app/SingleInstance.h"
#include "app/WindowSeam.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/TestSupport.h"

#include <QDBusMessage>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

using namespace tallowmere;

namespace {

// Records what the lifecycle asked of the windowing side.
class RecordingSeam final : public ForegroundSeam {
public:
    void createMainWindow(AppServices&) override { ++windowsCreated; }
    bool hasMainWindow() const override { return windowsCreated > 0; }
    void showMainWindow() override { visible = true; ++shows; }
    bool hasVisibleWindow() const override { return visible; }
    void setForeground(bool foreground) override { modes.push_back(foreground); }
    void terminate() override { ++terminations; }

    int windowsCreated = 0;
    int shows = 0;
    int terminations = 0;
    bool visible = false;
    std::vector<bool> modes;
};

// The container in surroundings of its own: private system and session buses, empty file
// system roots, no update feed, and a server port the system chooses.
struct PrivateEnvironment {
    QTemporaryDir dir;
    test::PrivateBus systemBus;
    test::PrivateBus sessionBus;
    AppEnvironment environment;

    PrivateEnvironment()
    {
        EXPECT_TRUE(systemBus.isUp() && sessionBus.isUp());
        environment.systemBus = systemBus.connection(QStringLiteral("system"));
        environment.sessionBus = sessionBus.connection(QStringLiteral("session"));
        environment.serverPort = 0;
        environment.roots.sys = dir.filePath(QStringLiteral("sys"));
        environment.roots.config = dir.filePath(QStringLiteral("config"));
        environment.roots.data = dir.filePath(QStringLiteral("data"));
    }
    ~PrivateEnvironment()
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("system"));
        QDBusConnection::disconnectFromBus(QStringLiteral("session"));
    }
};

struct Launched : PrivateEnvironment {
    explicit Launched(std::function<void(AppSettings&)> configure = {})
    {
        if (configure) {
            PreferencesStore store(environment.preferencesPath());
            AppSettings settings(store);
            configure(settings);
        }
        services = std::make_unique<AppServices>(environment);
        lifecycle = std::make_unique<AppLifecycle>(seam, [this]() -> AppServices& { return *services; });
        QSignalSpy launched(lifecycle.get(), &AppLifecycle::launched);
        lifecycle->onLaunchFinished();
        EXPECT_EQ(seam.windowsCreated, 0) << "the launch task is queued, not run inline";
        EXPECT_TRUE(launched.wait(2000));
    }

    void closeWindow()
    {
        seam.visible = false;
        lifecycle->onWindowClosed();
        QCoreApplication::processEvents();
    }

    RecordingSeam seam;
    std::unique_ptr<AppServices> services;
    std::unique_ptr<AppLifecycle> lifecycle;
};


} // namespace

TEST(AppLifecycle, FreshAccountShowsTheWindowAndSamplesNothing)
{
    Launched app;
    EXPECT_EQ(app.seam.windowsCreated, 1);
    EXPECT_TRUE(app.seam.visible);
    EXPECT_EQ(app.seam.modes, std::vector<bool>{true});
    EXPECT_EQ(app.services->cpuService().monitor().monitoringTask(), nullptr);
    EXPECT_EQ(app.services->memoryService().monitor().perProcessTask(), nullptr);
    // Recording is on by default, so closing the window keeps the process in the background.
    EXPECT_TRUE(app.lifecycle->shouldStayAlive());

    // A second launch creates no second window and applies nothing again.
    app.services->settings().setMenuBarEnabled(true);
    const LoopTask* loop = app.services->cpuService().monitor().monitoringTask();
    ASSERT_NE(loop, nullptr);
    app.services->launch(*app.lifecycle);
    EXPECT_EQ(app.seam.windowsCreated, 1);
    EXPECT_EQ(app.services->cpuService().monitor().monitoringTask(), loop);
}

TEST(AppLifecycle, AllSwitchesOffClosingTheWindowEndsTheProcess)
{
    Launched app([](AppSettings& settings) { settings.setNetworkRecordingEnabled(false); });
    EXPECT_TRUE(app.lifecycle->quitsWhenLastWindowCloses());
    app.closeWindow();
    EXPECT_EQ(app.seam.terminations, 1);
    EXPECT_EQ(app.seam.modes, std::vector<bool>{true});
}

TEST(AppLifecycle, OneSwitchOnKeepsRunningInTheBackgroundAndReopenShowsTheWindow)
{
    Launched app([](AppSettings& settings) {
        settings.setNetworkRecordingEnabled(false);
        settings.setMenuBarEnabled(true);
    });
    EXPECT_NE(app.services->cpuService().monitor().monitoringTask(), nullptr);
    app.closeWindow();
    EXPECT_EQ(app.seam.terminations, 0);
    EXPECT_EQ(app.seam.modes, (std::vector<bool>{true, false}));

    app.lifecycle->onReopen();
    EXPECT_EQ(app.seam.shows, 2);
    EXPECT_EQ(app.seam.modes, (std::vector<bool>{true, false, true}));

    // A reopen while the window is up brings it forward again without a change of mode.
    app.lifecycle->onReopen();
    EXPECT_EQ(app.seam.shows, 3);
    EXPECT_EQ(app.seam.modes.size(), 3u);
}

TEST(AppLifecycle, SecondStartBringsABuriedOrMinimizedWindowToTheFront)
{
    PrivateEnvironment surroundings;
    AppServices services(surroundings.environment);
    WindowSeam seam({});
    AppLifecycle lifecycle(seam, [&]() -> AppServices& { return services; });
    QSignalSpy launched(&lifecycle, &AppLifecycle::launched);
    lifecycle.onLaunchFinished();
    ASSERT_TRUE(launched.wait(2000));
    QWidget* window = seam.mainWindow();
    ASSERT_TRUE(window && window->isVisible());

    const QString name = surroundings.dir.filePath(QStringLiteral("instance.socket"));
    SingleInstance running(name);
    ASSERT_EQ(running.claim(), SingleInstance::Claim::ours);
    QObject::connect(&running, &SingleInstance::reopenRequested, &lifecycle, &AppLifecycle::onReopen);
    const auto secondStart = [&] {
        std::thread start([&] { SingleInstance(name).handOverReopen(); });
        const bool active = test::waitUntil([&] { return window->isActiveWindow() && !window->isMinimized(); });
        start.join();
        return active;
    };

    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(test::waitUntil([&] { return other.isActiveWindow(); }));
    EXPECT_TRUE(secondStart()) << "visible but buried";

    window->showMinimized();
    ASSERT_TRUE(test::waitUntil([&] { return window->isMinimized(); }));
    EXPECT_TRUE(secondStart()) << "minimized";
}

TEST(AppLifecycle, ServerSwitchAloneSamplesEveryMonitorAndServesFromThePrivateSurroundings)
{
    Launched app;
    ASSERT_TRUE(app.systemBus.startTemplate(QStringLiteral("upower"), QStringLiteral("org.freedesktop.UPower")));
    app.systemBus.callMock(QStringLiteral("org.freedesktop.UPower"), QStringLiteral("/org/freedesktop/UPower"),
                           QStringLiteral("AddDischargingBattery"),
                           {QStringLiteral("mock_BAT"), QStringLiteral("Mock"), 42.0, qlonglong(600)});
    AppServices& services = *app.services;
    services.settings().setLocalServerEnabled(true);
    EXPECT_TRUE(services.cpuService().serverActive());
    EXPECT_FALSE(services.cpuService().menuBarActive());
    EXPECT_NE(services.cpuService().monitor().monitoringTask(), nullptr);
    EXPECT_NE(services.memoryService().monitor().monitoringTask(), nullptr);
    EXPECT_NE(services.memoryService().monitor().perProcessTask(), nullptr);
    EXPECT_NE(services.diskService().monitor().monitoringTask(), nullptr);

    ASSERT_TRUE(services.statsServer().isRunning());
    EXPECT_NE(services.statsServer().listeningPort(), StatsServer::defaultPort);
    EXPECT_TRUE(services.snapshotGatherer().hasCachedSystem());
    EXPECT_EQ(services.snapshotGatherer().makeSnapshot().battery.percentage, 42) << "read on the private bus";
    EXPECT_TRUE(QFile::exists(app.environment.preferencesPath()));

    services.settings().setLocalServerEnabled(false);
    EXPECT_FALSE(services.statsServer().isRunning());
    EXPECT_EQ(services.cpuService().monitor().monitoringTask(), nullptr);
    EXPECT_EQ(services.memoryService().monitor().perProcessTask(), nullptr);
    EXPECT_EQ(services.diskService().monitor().monitoringTask(), nullptr);
}

TEST(AppLifecycle, HeadlessOverridesDoNotTouchThePreferences)
{
    PrivateEnvironment surroundings;
    AppEnvironment& environment = surroundings.environment;
    environment.localServerOverride = true;
    environment.hasMenuBar = false;
    {
        PreferencesStore store(environment.preferencesPath());
        AppSettings(store).setMenuBarEnabled(true);
    }
    AppServices services(environment);
    RecordingSeam seam;
    AppLifecycle lifecycle(seam, [&]() -> AppServices& { return services; });
    services.launch(lifecycle);
    EXPECT_TRUE(services.effectiveLocalServerEnabled());
    EXPECT_FALSE(services.cpuService().menuBarActive()) << "no tray to sample for";
    EXPECT_TRUE(services.cpuService().serverActive());
    EXPECT_FALSE(services.settings().localServerEnabled());
    PreferencesStore reread(environment.preferencesPath());
    EXPECT_EQ(reread.readBool(QStringLiteral("localServerEnabled")).status, ReadStatus::missing);
}
