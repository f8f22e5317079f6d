#pragma once

#include "power/KeepAwakeStatus.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace tallowmere {

// The two clocks keep-awake needs: the wall clock its end time is stated in, and one-shot
// sleeps on the monotonic clock. Tests hand in a clock they move forward themselves.
class KeepAwakeClock {
public:
    virtual ~KeepAwakeClock() = default;

    virtual WallTime now() const;

    // Calls `wake` once, on the main thread, `delay` from now. Destroying the returned handle
    // cancels the sleep; the handle may be destroyed from inside `wake`.
    virtual std::unique_ptr<QObject> sleep(std::chrono::milliseconds delay, std::function<void()> wake);
};

} // namespace tallowmere
