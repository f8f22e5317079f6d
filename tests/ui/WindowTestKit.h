#pragma once

#include "core/AppSettings.h"
#include "core/PreferencesStore.h"
#include "server/StatsServer.h"
#include "tests/support/ManualScheduler.h"
#include "ui/components/Theme.h"
#include "ui/live/LiveCards.h"
#include "ui/pages/InventoryPage.h"
#include "ui/window/WindowServices.h"
#include "update/UpdateService.h"

#include <QLabel>
#include <QStackedWidget>
#include <QTemporaryDir>

namespace tallowmere::test {

// A machine with everything filled in, the way a typical laptop reports it.
inline PageInputs fixtureInputs()
{
    SystemInfo info;
    info.modelIdentifier = QStringLiteral("20XW0055GE");
    info.machine = QStringLiteral("x86_64");
    info.boardID = QStringLiteral("20XW0055GE");
    info.platformUUID = QStringLiteral("4C4C4544-0042-3510-8052-B4C04F4A3732");
    info.marketingName = QStringLiteral("ThinkPad X1 Carbon Gen 9");
    info.serialNumber = QStringLiteral("PF2ABCD1XYZ9");
    info.cpuBrand = QStringLiteral("11th Gen Intel(R) Core(TM) i7-1165G7 @ 2.80GHz");
    info.cpuCores = 8;
    info.cpuPhysicalCores = 4;
    info.cpuFrequencyGHz = 2.8;
    info.memoryGB = 15.5;
    info.osVersion = QStringLiteral("Linux 6.1.0-13-amd64");
    info.osMarketingVersion = QStringLiteral("Debian GNU/Linux 12 (bookworm)");
    info.osComputerName = QStringLiteral("wren");
    info.osKernelVersion = QStringLiteral("6.1.0-13-amd64");
    info.storageTotalGB = 476.9;
    info.storageFreeGB = 176.9;
    info.volumes = {{QUuid::createUuid(), QStringLiteral("/"), 476.9, 176.9}, {QUuid::createUuid(), QStringLiteral("/boot/efi"), 0.5, 0.4}};
    info.gpus = {QStringLiteral("Intel Corporation TigerLake-LP GT2 [Iris Xe Graphics]")};
    info.audioDevices = {QStringLiteral("Built-in Audio Analog Stereo")};
    info.peripherals = {QStringLiteral("Integrated Camera"), QStringLiteral("USB Receiver")};
    info.networkInterfaces = {{QUuid::createUuid(), QStringLiteral("wlp0s20f3"), {QStringLiteral("192.168.1.23"), QStringLiteral("fe80::1%wlp0s20f3")}}};
    return {.info = info, .uptimeSeconds = 90061, .rootFileSystemType = QStringLiteral("ext4"), .battery = std::nullopt};
}

// The services the window is given, on a private preferences file and a loopback server that
// is never started unless a test starts it.
struct WindowTestKit {
    QTemporaryDir dir;
    PreferencesStore preferences{dir.filePath(QStringLiteral("preferences.json"))};
    AppSettings settings{preferences};
    StatsServer server{0, [] { return StatsSnapshot{}; }};
    UpdateService updates{UpdateEnvironment{.feedUrl = QUrl(QStringLiteral("http://127.0.0.1:9/feed.xml")),
                                            .runningBuild = 1,
                                            .programPath = QStringLiteral("/nonexistent/tallowmere"),
                                            .temporaryDirectory = dir.path(),
                                            .processId = 1,
                                            .quit = {},
                                            .runtimeDirectory = dir.path(),
                                            .publicKey = {}}};
    int gatherings = 0;
    PageInputs inputs = fixtureInputs();

    WindowServices services()
    {
        return WindowServices{
            .preferences = preferences,
            .settings = settings,
            .statsServer = server,
            .updateService = updates,
            .launchAtLogin = LaunchAtLogin(dir.filePath(QStringLiteral("autostart")), QStringLiteral("tallowmere")),
            .gatherInputs = [this] {
                ++gatherings;
                return inputs;
            },
        };
    }
};

// A live page built the way the main window builds it, stacked behind another page in a
// window; its services sleep on a scheduler the test moves on.
struct LivePageKit {
    WindowTestKit kit;
    std::shared_ptr<ManualScheduler> scheduler = std::make_shared<ManualScheduler>();
    QWidget window;
    QStackedWidget* stack = new QStackedWidget(&window);
    QWidget* other = new QWidget;
    InventoryPage* page = nullptr;

    void build(SpecCategory category, const WindowServices& services)
    {
        page = new InventoryPage(Theme::darkTheme(), makeSpecPage(category, kit.inputs));
        addLiveCards(Theme::darkTheme(), services, category, *page);
        stack->addWidget(other);
        stack->addWidget(page);
        stack->resize(900, 1400);
        window.show();
    }
    void advance(std::chrono::milliseconds by)
    {
        scheduler->advance(by);
        finishDetachedWork();
    }
    QString text(const char* name) const
    {
        const auto* label = page->findChild<QLabel*>(name);
        return label ? label->text() : QStringLiteral("(no %1)").arg(QLatin1String(name));
    }
};

} // namespace tallowmere::test
