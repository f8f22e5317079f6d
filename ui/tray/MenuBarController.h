#pragma once

#include "ui/popover/MenuBarStatsPopover.h"
#include "ui/tray/StripFigures.h"

#include <QDBusConnection>
#include <QObject>
#include <QPoint>
#include <QPointer>

#include <functional>
#include <memory>

class QMenu;
class QSystemTrayIcon;

namespace tallowmere {

class StatusNotifierItem;

// The program's presence in the panel: a tray item showing the strip's figures (a square live
// icon, a text label and a tooltip), and the popover it opens. The item exists only between
// installStatusItem() and removeStatusItem(); the services it shows are handed over first.
class MenuBarController : public QObject {
    Q_OBJECT
public:
    explicit MenuBarController(QDBusConnection sessionBus = QDBusConnection::sessionBus(), QObject* parent = nullptr);
    ~MenuBarController() override;

    // Opens the main window when no usable window is on screen; set by the composition root.
    std::function<void()> openMainWindow;
    // Ends the program; the default asks the application to quit.
    std::function<void()> quit;

    void setServices(TrayServices services);
    const TrayServices& services() const { return services_; }

    // Creates the tray item and the popover; does nothing when one exists or a service is missing.
    void installStatusItem();
    // Removes the item and closes the popover if it is open.
    void removeStatusItem();
    bool hasStatusItem() const { return installed_; }
    // True while the item is published over D-Bus rather than through the fallback icon.
    bool usesStatusNotifier() const { return installed_ && !fallback_; }

    // Opens the popover under `at`, or closes it when it is open.
    void togglePopover(QPoint at);
    void openApp();
    MenuBarStatsPopover* popover() const { return popover_.get(); }
    StatusNotifierItem* statusNotifierItem() const { return item_.get(); }

    // The figures last published to the panel.
    const StripFigures& figures() const { return figures_; }

signals:
    void popoverShownChanged(bool shown);

private:
    void scheduleRefresh();
    void refresh();
    void showContextMenu(QPoint at);
    void useStatusNotifier();
    void useFallbackIcon();

    QDBusConnection bus_;
    TrayServices services_;
    bool installed_ = false;
    bool refreshPending_ = false;
    StripFigures figures_;
    bool published_ = false;
    std::unique_ptr<StatusNotifierItem> item_;
    std::unique_ptr<QSystemTrayIcon> fallback_;
    std::unique_ptr<MenuBarStatsPopover> popover_;
    std::unique_ptr<QMenu> menu_;
    QList<QMetaObject::Connection> feeds_;
};

} // namespace tallowmere
