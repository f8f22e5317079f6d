#pragma once

#include "core/Scheduler.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace tallowmere {

// A periodic loop on the main thread: runs its body at once, then again `period` after the
// body finished. A body that hands work to another thread calls `done` when the result has
// been applied; the next sleep starts only then. Cancelling (or destroying) the loop stops it
// at once, including its sleep, and a `done` arriving afterwards is ignored. Sleeps come from
// `scheduler`, so tests move time on instead of waiting for it.
class LoopTask : public QObject {
    Q_OBJECT
public:
    using Done = std::function<void()>;
    using Body = std::function<void()>;
    using AsyncBody = std::function<void(Done done)>;

    static std::unique_ptr<LoopTask> start(std::chrono::milliseconds period, Body body,
                                           std::shared_ptr<Scheduler> scheduler = realScheduler());
    static std::unique_ptr<LoopTask> startAsync(std::chrono::milliseconds period, AsyncBody body,
                                                std::shared_ptr<Scheduler> scheduler = realScheduler());

    ~LoopTask() override;

    void cancel();
    bool isRunning() const { return !cancelled_; }

    // Takes effect at the next sleep; a running body is not disturbed.
    void setPeriod(std::chrono::milliseconds period) { period_ = period; }
    std::chrono::milliseconds period() const { return period_; }

private:
    LoopTask(std::chrono::milliseconds period, AsyncBody body, std::shared_ptr<Scheduler> scheduler);
    void runBody();
    void bodyFinished(quint64 round);

    std::chrono::milliseconds period_;
    AsyncBody body_;
    std::shared_ptr<Scheduler> scheduler_;
    std::unique_ptr<QObject> sleep_;  // set while sleeping
    bool cancelled_ = false;
    quint64 round_ = 0;
    std::shared_ptr<LoopTask*> self_;
};

} // namespace tallowmere
