#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

namespace tallowmere {

// A periodic loop on the main thread: runs its body at once, then again `period` after the
// body finished. A body that hands work to another thread calls `done` when the result has
// been applied; the next sleep starts only then. Cancelling (or destroying) the loop stops it
// at once, including its sleep, and a `done` arriving afterwards is ignored.
class LoopTask : public QObject {
    Q_OBJECT
public:
    using Done = std::function<void()>;
    using Body = std::function<void()>;
    using AsyncBody = std::function<void(Done done)>;

    static std::unique_ptr<LoopTask> start(std::chrono::milliseconds period, Body body);
    static std::unique_ptr<LoopTask> startAsync(std::chrono::milliseconds period, AsyncBody body);

    ~LoopTask() override;

    void cancel();
    bool isRunning() const { return !cancelled_; }

    // Takes effect at the next sleep; a running body is not disturbed.
    void setPeriod(std::chrono::milliseconds period) { period_ = period; }
    std::chrono::milliseconds period() const { return period_; }

private:
    LoopTask(std::chrono::milliseconds period, AsyncBody body);
    void runBody();
    void bodyFinished(quint64 round);

    std::chrono::milliseconds period_;
    AsyncBody body_;
    QTimer timer_;
    bool cancelled_ = false;
    quint64 round_ = 0;
    std::shared_ptr<LoopTask*> self_;
};

} // namespace tallowmere
