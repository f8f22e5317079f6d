#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <memory>
#include <type_traits>
#include <utility>

namespace tallowmere {

// Low-priority worker threads for collections that must never block the main thread.
QThreadPool& detachedPool();

// Runs `work` (which must touch no shared state) on the detached pool and hands its result
// to `apply` on the main thread. Nothing is applied once `context` is gone, even when it goes
// while the work is still running.
template <class Work, class Apply>
void runDetached(QObject* context, Work work, Apply apply)
{
    using Result = std::invoke_result_t<Work>;
    QPointer<QObject> guard(context);
    auto task = std::make_shared<std::pair<Work, Apply>>(std::move(work), std::move(apply));
    detachedPool().start([guard, task] {
        auto result = std::make_shared<Result>(task->first());
        // Delivered through the application object, which outlives every context; the guard
        // is read on the main thread, where contexts are destroyed.
        if (QCoreApplication* app = QCoreApplication::instance()) {
            QMetaObject::invokeMethod(app, [guard, task, result] {
                if (guard)
                    task->second(std::move(*result));
            }, Qt::QueuedConnection);
        }
    });
}

} // namespace tallowmere
