#pragma once

#include "app/ForegroundSeam.h"
#include "ui/window/WindowServices.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace tallowmere {

class MainWindowController;

// What the main window is given from the container, with this machine as its inventory.
WindowServices makeWindowServices(AppServices& services);

// The desktop side of the lifecycle: one main window; closing it is reported through
// `onWindowClosed`. Background mode only means that no window is up while the tray strip,
// the server and recording carry on.
class WindowSeam final : public ForegroundSeam {
public:
    explicit WindowSeam(std::function<void()> onWindowClosed);
    ~WindowSeam() override;

    void createMainWindow(AppServices& services) override;
    bool hasMainWindow() const override { return window_ != nullptr; }
    void showMainWindow() override;
    bool hasVisibleWindow() const override;
    void setForeground(bool foreground) override { foreground_ = foreground; }
    void terminate() override;

    bool isForeground() const { return foreground_; }
    QWidget* mainWindow() const;

private:
    std::function<void()> onWindowClosed_;
    std::unique_ptr<MainWindowController> window_;
    bool foreground_ = false;
};

} // namespace tallowmere
