#include "history/SerialQueue.h"

#include <pthread.h>

namespace tallowmere {

SerialQueue::SerialQueue(std::string name)
    : name_(std::move(name))
    , thread_([this] { run(); })
{
}

SerialQueue::~SerialQueue()
{
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void SerialQueue::post(std::function<void()> job)
{
    {
        std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    wake_.notify_one();
}

void SerialQueue::waitForIdle()
{
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return jobs_.empty() && !busy_; });
}

void SerialQueue::run()
{
    // Thread names are limited to 15 characters by the kernel.
    pthread_setname_np(pthread_self(), name_.substr(0, 15).c_str());
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
        if (jobs_.empty()) {
            // Only reached when stopping with nothing left to do.
            return;
        }
        std::function<void()> job = std::move(jobs_.front());
        jobs_.pop_front();
        busy_ = true;
        lock.unlock();
        job();
        job = nullptr;
        lock.lock();
        busy_ = false;
        if (jobs_.empty())
            idle_.notify_all();
    }
}

} // namespace tallowmere
