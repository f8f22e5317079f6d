#include "power/KeepAwakeClock.h"

#include <QTimer>

namespace tallowmere {

WallTime KeepAwakeClock::now() const
{
    return std::chrono::system_clock::now();
}

std::unique_ptr<QObject> KeepAwakeClock::sleep(std::chrono::milliseconds delay, std::function<void()> wake)
{
    // QTimer counts on the monotonic clock, so a changed wall clock moves no session end.
    auto timer = std::make_unique<QTimer>();
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), std::move(wake));
    timer->start(delay);
    return timer;
}

} // namespace tallowmere
