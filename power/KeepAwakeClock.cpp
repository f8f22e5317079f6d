#include "power/KeepAwakeClock.h"

#include "core/Scheduler.h"

namespace tallowmere {

WallTime KeepAwakeClock::now() const
{
    return std::chrono::system_clock::now();
}

std::unique_ptr<QObject> KeepAwakeClock::sleep(std::chrono::milliseconds delay, std::function<void()> wake)
{
    return realScheduler()->sleep(delay, std::move(wake));
}

} // namespace tallowmere
