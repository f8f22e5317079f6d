#include "app/WindowSeam.h"

#include "app/AppServices.h"
#include "ui/window/MainWindow.h"
#include "ui/window/MainWindowController.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

namespace tallowmere {

WindowServices makeWindowServices(AppServices& services)
{
    return WindowServices{
        .preferences = services.preferences(),
        .settings = services.settings(),
        .statsServer = services.statsServer(),
        .updateService = services.updateService(),
        .launchAtLogin = LaunchAtLogin::forCurrentUser(),
        .gatherInputs = [&services] { return gatherMachineInputs(services.systemInfo()); },
        .cpu = &services.cpuService(),
        .memory = &services.memoryService(),
        .disk = &services.diskService(),
        .network = &services.networkService(),
        .battery = &services.batteryService(),
        .camera = &services.cameraService(),
    };
}

WindowSeam::WindowSeam(std::function<void()> onWindowClosed)
    : onWindowClosed_(std::move(onWindowClosed))
{
}

WindowSeam::~WindowSeam() = default;

void WindowSeam::createMainWindow(AppServices& services)
{
    if (window_)
        return;
    window_ = std::make_unique<MainWindowController>(makeWindowServices(services));
    QObject::connect(window_.get(), &MainWindowController::closed, window_.get(), [this] {
        if (onWindowClosed_)
            onWindowClosed_();
    });
}

void WindowSeam::showMainWindow()
{
    if (!window_)
        return;
    window_->showWindow();
}

QWidget* WindowSeam::mainWindow() const
{
    return window_ ? &window_->window() : nullptr;
}

bool WindowSeam::hasVisibleWindow() const
{
    const auto windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [](const QWidget* w) {
        return w->isVisible() && !w->isMinimized() && w->isWindow() && !w->windowFlags().testFlag(Qt::Popup);
    });
}

void WindowSeam::terminate()
{
    QCoreApplication::quit();
}

} // namespace tallowmere
