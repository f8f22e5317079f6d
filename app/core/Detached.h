#pragma once

#include <QFuture>
#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

#include <type_traits>
#include <utility>

namespace tallowmere {

// Low-priority worker threads for collections that must never block the main thread.
QThreadPool& detachedPool();

// Runs `work` (which must touch no shared state) on the detached pool and hands its result
// to `apply` on the thread of `context`. Nothing is applied once `context` is gone.
template <class Work, class Apply>
void runDetached(QObject* context, Work work, Apply apply)
{
    using Result = std::invoke_result_t<Work>;
    QPointer<QObject> guard(context);
    QFuture<Result> future = QtConcurrent::run(&detachedPool(), std::move(work));
    future.then(context, [guard, apply = std::move(apply)](Result result) mutable {
        if (guard)
            apply(std::move(result));
    });
}

} // namespace tallowmere
