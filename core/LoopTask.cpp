#include "core/LoopTask.h"

namespace tallowmere {

std::unique_ptr<LoopTask> LoopTask::start(std::chrono::milliseconds period, Body body,
                                          std::shared_ptr<Scheduler> scheduler)
{
    return startAsync(
        period,
        [body = std::move(body)](Done done) {
            body();
            done();
        },
        std::move(scheduler));
}

std::unique_ptr<LoopTask> LoopTask::startAsync(std::chrono::milliseconds period, AsyncBody body,
                                               std::shared_ptr<Scheduler> scheduler)
{
    std::unique_ptr<LoopTask> task(new LoopTask(period, std::move(body), std::move(scheduler)));
    task->runBody();
    return task;
}

LoopTask::LoopTask(std::chrono::milliseconds period, AsyncBody body, std::shared_ptr<Scheduler> scheduler)
    : period_(period)
    , body_(std::move(body))
    , scheduler_(std::move(scheduler))
    , self_(std::make_shared<LoopTask*>(this))
{
}

LoopTask::~LoopTask()
{
    cancel();
    *self_ = nullptr;
}

void LoopTask::cancel()
{
    cancelled_ = true;
    sleep_.reset();
}

void LoopTask::runBody()
{
    if (cancelled_)
        return;
    const quint64 round = ++round_;
    // The completion may outlive this object (a detached collection still in flight).
    std::weak_ptr<LoopTask*> weak = self_;
    body_([weak, round] {
        if (auto self = weak.lock(); self && *self)
            (*self)->bodyFinished(round);
    });
}

void LoopTask::bodyFinished(quint64 round)
{
    if (cancelled_ || round != round_ || sleep_)
        return;
    sleep_ = scheduler_->sleep(period_, [this] {
        // The ended sleep is let go only after the body, which may already arm the next one.
        const std::unique_ptr<QObject> ended = std::move(sleep_);
        runBody();
    });
}

} // namespace tallowmere
