#include "core/Detached.h"

#include "core/WorkerPool.h"

namespace tallowmere {

QThreadPool& detachedPool()
{
    static const std::unique_ptr<QThreadPool> pool = makeWorkerPool(2, QThread::LowPriority);
    return *pool;
}

} // namespace tallowmere
