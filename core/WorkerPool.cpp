#include "core/WorkerPool.h"

#include <QMutex>

#include <algorithm>
#include <vector>

namespace tallowmere {

namespace {

struct Registry {
    QMutex mutex;
    std::vector<QThreadPool*> pools;
};

Registry& registry()
{
    static Registry instance;
    return instance;
}

} // namespace

std::unique_ptr<QThreadPool> makeWorkerPool(int maxThreads, QThread::Priority priority)
{
    auto pool = std::make_unique<QThreadPool>();
    pool->setThreadPriority(priority);
    pool->setMaxThreadCount(maxThreads);
    pool->setExpiryTimeout(30'000);
    {
        QMutexLocker lock(&registry().mutex);
        registry().pools.push_back(pool.get());
    }
    QObject::connect(pool.get(), &QObject::destroyed, [raw = pool.get()] {
        QMutexLocker lock(&registry().mutex);
        std::erase(registry().pools, raw);
    });
    return pool;
}

bool waitForWorkerPools()
{
    std::vector<QThreadPool*> pools;
    {
        QMutexLocker lock(&registry().mutex);
        pools = registry().pools;
    }
    bool hadWork = false;
    for (QThreadPool* pool : pools) {
        hadWork = hadWork || pool->activeThreadCount() > 0;
        pool->waitForDone();
    }
    return hadWork;
}

} // namespace tallowmere
