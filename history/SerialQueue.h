#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace tallowmere {

// One worker thread running jobs in the order they were posted. Destruction runs every job
// already posted, then ends the thread.
class SerialQueue {
public:
    explicit SerialQueue(std::string name);
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    void post(std::function<void()> job);

    // Blocks until every job posted before the call has run.
    void waitForIdle();

private:
    void run();

    std::string name_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    std::deque<std::function<void()>> jobs_;
    bool busy_ = false;
    bool stopping_ = false;
    std::thread thread_;
};

} // namespace tallowmere
