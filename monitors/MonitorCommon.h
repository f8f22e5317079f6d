#pragma once

#include "core/LoopTask.h"

#include <QList>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace tallowmere {

// Wall-clock source for timestamps that rates are computed over; tests hand in their own.
using WallClock = std::function<std::chrono::system_clock::time_point()>;
inline std::chrono::system_clock::time_point systemNow() { return std::chrono::system_clock::now(); }

inline constexpr int kHistoryLimit = 60;
inline constexpr double kBytesPerGB = 1024.0 * 1024.0 * 1024.0;

inline double toGB(std::uint64_t bytes) { return static_cast<double>(bytes) / kBytesPerGB; }

// Limited to at most 100 first, then to at least 0.
inline double clampPercent(double value) { return std::max(std::min(value, 100.0), 0.0); }

inline double secondsBetween(std::chrono::system_clock::time_point from,
                             std::chrono::system_clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

// The history with one more point whose id follows the last one (0 for the first), keeping
// only the newest kHistoryLimit points.
template <class Point, class... Values>
QList<Point> appendedHistory(QList<Point> history, Values... values)
{
    const qint64 id = history.isEmpty() ? 0 : history.last().id + 1;
    history.append(Point{id, values...});
    if (history.size() > kHistoryLimit)
        history.remove(0, history.size() - kHistoryLimit);
    return history;
}

// The slot a monitor keeps one loop in: a loop is created only while the slot is empty, and
// stopping cancels the loop and empties the slot.
class LoopSlot {
public:
    explicit LoopSlot(std::shared_ptr<Scheduler> scheduler) : scheduler_(std::move(scheduler)) {}

    template <class Body>
    void startIfEmpty(std::chrono::milliseconds period, Body body)
    {
        if (!task_)
            task_ = LoopTask::start(period, std::move(body), scheduler_);
    }
    template <class Body>
    void startAsyncIfEmpty(std::chrono::milliseconds period, Body body)
    {
        if (!task_)
            task_ = LoopTask::startAsync(period, std::move(body), scheduler_);
    }
    void stop() { task_.reset(); }
    bool isEmpty() const { return !task_; }
    LoopTask* task() const { return task_.get(); }

private:
    std::shared_ptr<Scheduler> scheduler_;
    std::unique_ptr<LoopTask> task_;
};

} // namespace tallowmere
