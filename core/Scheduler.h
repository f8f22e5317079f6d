#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace tallowmere {

// Where loops take their sleeps from. The real one counts on the monotonic clock; tests hand
// in one whose time they move forward themselves.
class Scheduler {
public:
    virtual ~Scheduler() = default;

    // Calls `wake` once, on the main thread, `delay` from now. Destroying the returned handle
    // cancels the sleep; the handle may be destroyed from inside `wake`.
    virtual std::unique_ptr<QObject> sleep(std::chrono::milliseconds delay, std::function<void()> wake) = 0;
};

// The shared scheduler on Qt's precise timers.
std::shared_ptr<Scheduler> realScheduler();

} // namespace tallowmere
