#include "core/Detached.h"

#include <QThread>

namespace tallowmere {

QThreadPool& detachedPool()
{
    static QThreadPool pool;
    static const bool configured = [] {
        pool.setThreadPriority(QThread::LowPriority);
        pool.setMaxThreadCount(2);
        pool.setExpiryTimeout(30'000);
        return true;
    }();
    (void)configured;
    return pool;
}

} // namespace tallowmere
