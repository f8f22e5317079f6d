#include "app/WindowSeam.h"

#include "app/AppServices.h"
#include "ui/window/MainWindow.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

namespace tallowmere {

WindowSeam::WindowSeam(std::function<void()> onWindowClosed)
    : onWindowClosed_(std::move(onWindowClosed))
{
}

WindowSeam::~WindowSeam() = default;

void WindowSeam::createMainWindow(AppServices& services)
{
    if (window_)
        return;
    window_ = std::make_unique<MainWindow>(services.cpuService(), services.memoryService(), services.diskService());
    QObject::connect(window_.get(), &MainWindow::closed, window_.get(), [this] {
        if (onWindowClosed_)
            onWindowClosed_();
    });
}

void WindowSeam::showMainWindow()
{
    if (!window_)
        return;
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    // On X11 this is the request for activation to the window manager (_NET_ACTIVE_WINDOW); one
    // that prevents focus stealing may mark the window as wanting attention instead.
    window_->activateWindow();
}

QWidget* WindowSeam::mainWindow() const
{
    return window_.get();
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
