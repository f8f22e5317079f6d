#pragma once

#include <QObject>

#include <functional>

namespace tallowmere {

class AppServices;
class ForegroundSeam;

// The process's answers to the windowing events: launch, last window closed, and a reopen
// request (a second launch of the program while this one runs).
class AppLifecycle : public QObject {
    Q_OBJECT
public:
    using ServicesProvider = std::function<AppServices&()>;

    // `services` is asked for the container when the launch task runs; by default the
    // process-wide one.
    explicit AppLifecycle(ForegroundSeam& seam, ServicesProvider services = {}, QObject* parent = nullptr);

    // Until launch replaces it, the process stays alive.
    std::function<bool()> shouldStayAlive = [] { return true; };

    ForegroundSeam& seam() const { return seam_; }

    // Queues the launch task on the main thread and returns at once.
    void onLaunchFinished();
    bool quitsWhenLastWindowCloses() const { return !shouldStayAlive(); }
    // A second start of the program: the main window comes to the front, also when it is up
    // but buried under other windows.
    void onReopen();
    // Queues the check for a remaining visible window.
    void onWindowClosed();

signals:
    void launched();

private:
    void runLaunchTask();
    void afterWindowClosed();

    ForegroundSeam& seam_;
    ServicesProvider services_;
};

} // namespace tallowmere
