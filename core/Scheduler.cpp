#include "core/Scheduler.h"

#include <QTimer>

namespace tallowmere {

namespace {

class TimerScheduler final : public Scheduler {
public:
    std::unique_ptr<QObject> sleep(std::chrono::milliseconds delay, std::function<void()> wake) override
    {
        // QTimer counts on the monotonic clock, so a changed wall clock moves no loop.
        auto timer = std::make_unique<QTimer>();
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer.get(), &QTimer::timeout, timer.get(), std::move(wake));
        timer->start(delay);
        return timer;
    }
};

} // namespace

std::shared_ptr<Scheduler> realScheduler()
{
    static const std::shared_ptr<Scheduler> scheduler = std::make_shared<TimerScheduler>();
    return scheduler;
}

} // namespace tallowmere
