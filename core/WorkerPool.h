#pragma once

#include <QThread>
#include <QThreadPool>

#include <memory>

namespace tallowmere {

// A pool of at most `maxThreads` workers at `priority`; idle workers end after half a minute,
// so a pool that is rarely used holds no threads.
std::unique_ptr<QThreadPool> makeWorkerPool(int maxThreads, QThread::Priority priority);

// Waits until no pool made by makeWorkerPool runs or holds work; true when any had some.
bool waitForWorkerPools();

} // namespace tallowmere
