#include "core/LoopTask.h"

namespace tallowmere {

std::unique_ptr<LoopTask> LoopTask::start(std::chrono::milliseconds period, Body body)
{
    return startAsync(period, [body = std::move(body)](Done done) {
        body();
        done();
    });
}

std::unique_ptr<LoopTask> LoopTask::startAsync(std::chrono::milliseconds period, AsyncBody body)
{
    std::unique_ptr<LoopTask> task(new LoopTask(period, std::move(body)));
    task->runBody();
    return task;
}

LoopTask::LoopTask(std::chrono::milliseconds period, AsyncBody body)
    : period_(period)
    , body_(std::move(body))
    , self_(std::make_shared<LoopTask*>(this))
{
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &LoopTask::runBody);
}

LoopTask::~LoopTask()
{
    cancel();
    *self_ = nullptr;
}

void LoopTask::cancel()
{
    cancelled_ = true;
    timer_.stop();
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
    if (cancelled_ || round != round_ || timer_.isActive())
        return;
    timer_.start(period_);
}

} // namespace tallowmere
