#pragma once

#include "core/Scheduler.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace tallowmere::test {

// A scheduler whose time stands still until the test moves it on: advance() runs every sleep
// that ends on the way, in the order they end, so loops go through exact rounds.
class ManualScheduler final : public Scheduler {
public:
    std::unique_ptr<QObject> sleep(std::chrono::milliseconds delay, std::function<void()> wake) override;

    void advance(std::chrono::milliseconds by);
    std::chrono::milliseconds now() const { return state_->now; }
    // Sleeps neither ended nor cancelled.
    std::size_t pending() const { return state_->sleeps.size(); }

private:
    using Key = std::pair<std::chrono::milliseconds, std::uint64_t>;  // end, then order of asking
    struct State {
        std::chrono::milliseconds now{0};
        std::uint64_t asked = 0;
        std::map<Key, std::function<void()>> sleeps;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

// Waits for the work on every worker pool (detached collections, name lookups) and delivers
// its results, so a test knows a loop's round is complete without sleeping.
void finishDetachedWork();

} // namespace tallowmere::test
