#include "core/WorkerPool.h"

namespace tallowmere {

std::unique_ptr<QThreadPool> makeWorkerPool(int maxThreads, QThread::Priority priority)
{
    auto pool = std::make_unique<QThreadPool>();
    pool->setThreadPriority(priority);
    pool->setMaxThreadCount(maxThreads);
    pool->setExpiryTimeout(30'000);
    return pool;
}

} // namespace tallowmere
