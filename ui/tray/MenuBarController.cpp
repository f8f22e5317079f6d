#include "ui/tray/MenuBarController.h"

#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryMonitoringService.h"
#include "ui/tray/LiveIcon.h"
#include "ui/tray/StatusNotifierItem.h"

#include <QApplication>
#include <QCursor>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>

namespace tallowmere {

MenuBarController::MenuBarController(QDBusConnection sessionBus, QObject* parent)
    : QObject(parent)
    , quit([] { QCoreApplication::quit(); })
    , bus_(std::move(sessionBus))
{
}

MenuBarController::~MenuBarController()
{
    removeStatusItem();
}

void MenuBarController::setServices(TrayServices services)
{
    services_ = std::move(services);
}

void MenuBarController::installStatusItem()
{
    if (installed_ || !services_.complete())
        return;
    installed_ = true;

    popover_ = std::make_unique<MenuBarStatsPopover>(services_);
    popover_->onOpenApp = [this] { openApp(); };
    popover_->onQuit = [this] {
        if (quit)
            quit();
    };
    connect(popover_.get(), &MenuBarStatsPopover::closed, this, [this] { emit popoverShownChanged(false); });

    menu_ = std::make_unique<QMenu>();
    menu_->addAction(QStringLiteral("Open Tallowmere"), this, [this] { openApp(); });
    menu_->addAction(QStringLiteral("Quit"), this, [this] {
        if (quit)
            quit();
    });

    auto refreshLater = [this] { scheduleRefresh(); };
    feeds_ << connect(&services_.cpu->monitor(), &CPUMonitor::historyChanged, this, refreshLater)
           << connect(&services_.memory->monitor(), &MemoryMonitor::historyChanged, this, refreshLater)
           << connect(&services_.network->monitor(), &NetworkMonitor::historyChanged, this, refreshLater)
           << connect(services_.battery, &BatteryMonitoringService::batteryChanged, this, refreshLater);

    item_ = std::make_unique<StatusNotifierItem>(bus_);
    connect(item_.get(), &StatusNotifierItem::activated, this, &MenuBarController::togglePopover);
    connect(item_.get(), &StatusNotifierItem::secondaryActivated, this, &MenuBarController::togglePopover);
    connect(item_.get(), &StatusNotifierItem::contextMenuRequested, this, &MenuBarController::showContextMenu);
    // A panel that starts after us gets the item; the item re-registers itself on restarts.
    connect(item_.get(), &StatusNotifierItem::watcherChanged, this, [this](bool present) {
        if (present && fallback_)
            useStatusNotifier();
    });
    if (bus_.isConnected() && item_->watcherPresent())
        useStatusNotifier();
    else
        useFallbackIcon();
    published_ = false;
    refresh();
}

void MenuBarController::useStatusNotifier()
{
    fallback_.reset();
    if (!item_->publish())
        useFallbackIcon();
}

void MenuBarController::useFallbackIcon()
{
    if (fallback_)
        return;
    fallback_ = std::make_unique<QSystemTrayIcon>();
    connect(fallback_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        const QRect geometry = fallback_->geometry();
        const QPoint at = geometry.isValid() ? QPoint(geometry.center().x(), geometry.bottom()) : QCursor::pos();
        if (reason == QSystemTrayIcon::Context)
            showContextMenu(QCursor::pos());
        else if (reason == QSystemTrayIcon::Trigger)
            togglePopover(at);
    });
    published_ = false;
    if (installed_)
        refresh();
    fallback_->show();
}

void MenuBarController::removeStatusItem()
{
    for (const QMetaObject::Connection& c : feeds_)
        disconnect(c);
    feeds_.clear();
    if (popover_ && popover_->isVisible())
        popover_->hide();
    fallback_.reset();
    item_.reset();
    menu_.reset();
    popover_.reset();
    installed_ = false;
}

void MenuBarController::scheduleRefresh()
{
    // The monitors publish one after another in the same second; draw once for all of them.
    if (refreshPending_)
        return;
    refreshPending_ = true;
    QTimer::singleShot(0, this, [this] {
        refreshPending_ = false;
        refresh();
    });
}

void MenuBarController::refresh()
{
    if (!installed_)
        return;
    StripFigures figures = StripFigures::read(*services_.cpu, *services_.memory, *services_.network, *services_.battery);
    if (published_ && figures == figures_)
        return;
    const bool iconChanged =
        !published_ || figures.cpuHistory != figures_.cpuHistory || figures.memoryHistory != figures_.memoryHistory;
    figures_ = std::move(figures);
    published_ = true;

    if (fallback_) {
        if (iconChanged) {
            QIcon icon;
            for (int size : LiveIcon::sizes())
                icon.addPixmap(QPixmap::fromImage(LiveIcon::render(figures_, size)));
            fallback_->setIcon(icon);
        }
        fallback_->setToolTip(stripLabel(figures_) + QLatin1Char('\n') + stripToolTip(figures_));
        return;
    }
    if (iconChanged) {
        TrayPixmaps pixmaps;
        for (int size : LiveIcon::sizes())
            pixmaps.append(TrayPixmap::fromImage(LiveIcon::render(figures_, size)));
        item_->setIcon(pixmaps);
    }
    item_->setLabel(stripLabel(figures_), stripLabelGuide(figures_));
    item_->setToolTip(QStringLiteral("Tallowmere"), stripToolTip(figures_));
}

void MenuBarController::togglePopover(QPoint at)
{
    if (!installed_ || !popover_)
        return;
    if (popover_->isVisible()) {
        popover_->hide();
        return;
    }
    popover_->popUp(at);
    emit popoverShownChanged(true);
}

void MenuBarController::showContextMenu(QPoint at)
{
    if (menu_)
        menu_->popup(at);
}

void MenuBarController::openApp()
{
    if (popover_)
        popover_->hide();
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window == popover_.get() || !window->isVisible() || window->windowType() != Qt::Window)
            continue;
        window->raise();
        window->activateWindow();
        return;
    }
    if (openMainWindow)
        openMainWindow();
}

} // namespace tallowmere
