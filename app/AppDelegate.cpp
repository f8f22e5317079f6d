#include "app/AppDelegate.h"

#include "app/AppServices.h"
#include "app/ForegroundSeam.h"

#include <QTimer>

namespace tallowmere {

AppDelegate::AppDelegate(ForegroundSeam& seam, ServicesProvider services, QObject* parent)
    : QObject(parent)
    , seam_(seam)
    , services_(services ? std::move(services) : ServicesProvider([]() -> AppServices& { return AppServices::shared(); }))
{
}

void AppDelegate::applicationDidFinishLaunching()
{
    QTimer::singleShot(0, this, &AppDelegate::runLaunchTask);
}

void AppDelegate::runLaunchTask()
{
    AppServices& services = services_();
    services.launch(*this);
    if (seam_.hasMainWindow())
        seam_.showMainWindow();
    seam_.setForeground(true);
    emit launched();
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows)
{
    if (hasVisibleWindows)
        return true;
    if (seam_.hasMainWindow())
        seam_.showMainWindow();
    seam_.setForeground(true);
    return true;
}

void AppDelegate::windowWillClose()
{
    QTimer::singleShot(0, this, &AppDelegate::afterWindowClosed);
}

void AppDelegate::afterWindowClosed()
{
    if (seam_.hasVisibleWindow())
        return;
    if (shouldStayAlive())
        seam_.setForeground(false);
    else if (applicationShouldTerminateAfterLastWindowClosed())
        seam_.terminate();
}

} // namespace tallowmere
