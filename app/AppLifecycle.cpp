#include "app/AppLifecycle.h"

#include "app/AppServices.h"
#include "app/ForegroundSeam.h"

#include <QTimer>

namespace tallowmere {

AppLifecycle::AppLifecycle(ForegroundSeam& seam, ServicesProvider services, QObject* parent)
    : QObject(parent)
    , seam_(seam)
    , services_(services ? std::move(services) : ServicesProvider([]() -> AppServices& { return AppServices::shared(); }))
{
}

void AppLifecycle::onLaunchFinished()
{
    QTimer::singleShot(0, this, &AppLifecycle::runLaunchTask);
}

void AppLifecycle::runLaunchTask()
{
    AppServices& services = services_();
    services.launch(*this);
    if (seam_.hasMainWindow())
        seam_.showMainWindow();
    seam_.setForeground(true);
    emit launched();
}

void AppLifecycle::onReopen()
{
    const bool wasVisible = seam_.hasVisibleWindow();
    if (seam_.hasMainWindow())
        seam_.showMainWindow();
    if (!wasVisible)
        seam_.setForeground(true);
}

void AppLifecycle::onWindowClosed()
{
    QTimer::singleShot(0, this, &AppLifecycle::afterWindowClosed);
}

void AppLifecycle::afterWindowClosed()
{
    if (seam_.hasVisibleWindow())
        return;
    if (shouldStayAlive())
        seam_.setForeground(false);
    else if (quitsWhenLastWindowCloses())
        seam_.terminate();
}

} // namespace tallowmere
