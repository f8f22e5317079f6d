#pragma once

#include <QObject>

#include <functional>

namespace tallowmere {

class AppServices;
class ForegroundSeam;

// The process's answers to the windowing events: launch, last window closed, and a reopen
// request (a second launch of the program while this one runs).
class AppDelegate : public QObject {
    Q_OBJECT
public:
    using ServicesProvider = std::function<AppServices&()>;

    // `services` is asked for the container when the launch task runs; by default the
    // process-wide one.
    explicit AppDelegate(ForegroundSeam& seam, ServicesProvider services = {}, QObject* parent = nullptr);

    // Until launch replaces it, the process stays alive.
    std::function<bool()> shouldStayAlive = [] { return true; };

    ForegroundSeam& seam() const { return seam_; }

    // Queues the launch task on the main thread and returns at once.
    void applicationDidFinishLaunching();
    bool applicationShouldTerminateAfterLastWindowClosed() const { return !shouldStayAlive(); }
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    // Queues the check for a remaining visible window.
    void windowWillClose();

signals:
    void launched();

private:
    void runLaunchTask();
    void afterWindowClosed();

    ForegroundSeam& seam_;
    ServicesProvider services_;
};

} // namespace tallowmere
