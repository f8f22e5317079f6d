#pragma once

namespace tallowmere {

class AppServices;

// What the process's lifecycle needs from the windowing side: a main window that can be made
// and shown, whether any window is visible, and the switch between the foreground mode (the
// main window shown and active) and the background mode (no window; the tray, the server and
// recording keep running). Headless runs use one that has no windows at all.
class ForegroundSeam {
public:
    virtual ~ForegroundSeam() = default;

    virtual void createMainWindow(AppServices& services) = 0;
    virtual bool hasMainWindow() const = 0;
    // Shows the main window and brings it to the front.
    virtual void showMainWindow() = 0;
    virtual bool hasVisibleWindow() const = 0;
    virtual void setForeground(bool foreground) = 0;
    // Ends the process in an orderly way.
    virtual void terminate() = 0;
};

} // namespace tallowmere
