#pragma once

#include "ui/tray/StatusNotifierItem.h"

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>

namespace tallowmere {

// The object the panel talks to. Properties are read live from the item.
class StatusNotifierItemAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconName READ empty)
    Q_PROPERTY(tallowmere::TrayPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(QString OverlayIconName READ empty)
    Q_PROPERTY(tallowmere::TrayPixmaps OverlayIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionIconName READ empty)
    Q_PROPERTY(tallowmere::TrayPixmaps AttentionIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionMovieName READ empty)
    Q_PROPERTY(tallowmere::TrayToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide)
    Q_PROPERTY(uint XAyatanaOrderingIndex READ orderingIndex)
public:
    explicit StatusNotifierItemAdaptor(StatusNotifierItem* item)
        : QDBusAbstractAdaptor(item)
        , item_(item)
    {
    }

    QString category() const { return QStringLiteral("Hardware"); }
    QString id() const { return QStringLiteral("tallowmere"); }
    QString title() const { return QStringLiteral("Tallowmere"); }
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    QString empty() const { return {}; }
    TrayPixmaps iconPixmap() const { return item_->icon(); }
    TrayPixmaps noPixmaps() const { return {}; }
    TrayToolTip toolTip() const { return item_->toolTip(); }
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const { return QDBusObjectPath(QStringLiteral("/NO_DBUSMENU")); }
    QString label() const { return item_->label(); }
    QString labelGuide() const { return item_->labelGuide(); }
    uint orderingIndex() const { return 0; }

public slots:
    void Activate(int x, int y) { emit item_->activated(QPoint(x, y)); }
    void SecondaryActivate(int x, int y) { emit item_->secondaryActivated(QPoint(x, y)); }
    void ContextMenu(int x, int y) { emit item_->contextMenuRequested(QPoint(x, y)); }
    void Scroll(int, const QString&) {}

signals:
    void NewTitle();
    void NewIcon();
    void NewAttentionIcon();
    void NewOverlayIcon();
    void NewToolTip();
    void NewStatus(const QString& status);
    void XAyatanaNewLabel(const QString& label, const QString& guide);

private:
    StatusNotifierItem* item_;
};

} // namespace tallowmere
