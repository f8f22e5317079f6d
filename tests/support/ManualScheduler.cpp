#include "tests/support/ManualScheduler.h"

#include "core/WorkerPool.h"

#include <QCoreApplication>

namespace tallowmere::test {

namespace {

// Cancels its sleep when destroyed, also after the scheduler is gone.
class SleepHandle final : public QObject {
public:
    SleepHandle(std::weak_ptr<void> state, std::function<void()> cancel)
        : state_(std::move(state))
        , cancel_(std::move(cancel))
    {
    }
    ~SleepHandle() override
    {
        if (!state_.expired())
            cancel_();
    }

private:
    std::weak_ptr<void> state_;
    std::function<void()> cancel_;
};

} // namespace

std::unique_ptr<QObject> ManualScheduler::sleep(std::chrono::milliseconds delay, std::function<void()> wake)
{
    const Key key{state_->now + delay, state_->asked++};
    state_->sleeps.emplace(key, std::move(wake));
    State* state = state_.get();
    return std::make_unique<SleepHandle>(state_, [state, key] { state->sleeps.erase(key); });
}

void ManualScheduler::advance(std::chrono::milliseconds by)
{
    const auto until = state_->now + by;
    while (!state_->sleeps.empty() && state_->sleeps.begin()->first.first <= until) {
        auto node = state_->sleeps.extract(state_->sleeps.begin());
        state_->now = node.key().first;
        node.mapped()();
    }
    state_->now = until;
}

void finishDetachedWork()
{
    // A delivered result may start the next piece of work, hence the loop.
    while (waitForWorkerPools())
        QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents();
}

} // namespace tallowmere::test
