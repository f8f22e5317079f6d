#pragma once

#include "ui/window/WindowServices.h"

#include <QObject>

#include <memory>

namespace tallowmere {

class MainWindow;

// Owns the main window for the life of the process: opens it where it was last left (within
// reason), shows it in front on request, and remembers its frame when it closes. Closing only
// hides it; `closed` tells the lifecycle.
class MainWindowController : public QObject {
    Q_OBJECT
public:
    explicit MainWindowController(WindowServices services, QObject* parent = nullptr);
    ~MainWindowController() override;

    MainWindow& window() const { return *window_; }
    // Shows the window, raises it and gives it the keyboard.
    void showWindow();
    // Writes the window's frame to the preferences.
    void saveFrame();

signals:
    void closed();

private:
    void restoreFrame();

    PreferencesStore& preferences_;
    std::unique_ptr<MainWindow> window_;
};

} // namespace tallowmere
