#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QString>

class QDBusServiceWatcher;

namespace tallowmere {

// One icon image as the tray protocol carries it: width, height and ARGB32 bytes in network
// byte order.
struct TrayPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;

    static TrayPixmap fromImage(const QImage& image);
};
using TrayPixmaps = QList<TrayPixmap>;

struct TrayToolTip {
    QString iconName;
    TrayPixmaps icons;
    QString title;
    QString description;
};

QDBusArgument& operator<<(QDBusArgument& arg, const TrayPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& arg, TrayPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& arg, const TrayToolTip& tip);
const QDBusArgument& operator>>(const QDBusArgument& arg, TrayToolTip& tip);

// Our tray item on the session bus: it owns a bus name, exports the item object and registers
// it with the panel's watcher, again whenever a watcher appears. Clicks arrive as signals with
// the screen point the panel reported.
class StatusNotifierItem : public QObject {
    Q_OBJECT
public:
    static constexpr const char* kWatcherService = "org.kde.StatusNotifierWatcher";
    static constexpr const char* kItemPath = "/StatusNotifierItem";

    explicit StatusNotifierItem(QDBusConnection bus, QObject* parent = nullptr);
    ~StatusNotifierItem() override;

    // Whether a watcher is on the bus right now: without one nobody shows the item.
    bool watcherPresent() const;
    // Claims the bus name, exports the object and registers with the watcher when there is one.
    // False when the bus refuses the name or the object.
    bool publish();
    const QString& serviceName() const { return serviceName_; }

    // Published state; each setter announces the change only when the value differs.
    void setIcon(const TrayPixmaps& pixmaps);
    void setLabel(const QString& label, const QString& guide);
    void setToolTip(const QString& title, const QString& description);

    const TrayPixmaps& icon() const { return icon_; }
    const QString& label() const { return label_; }
    const QString& labelGuide() const { return labelGuide_; }
    const TrayToolTip& toolTip() const { return toolTip_; }

signals:
    void activated(QPoint at);
    void secondaryActivated(QPoint at);
    void contextMenuRequested(QPoint at);
    // A watcher appeared or went away.
    void watcherChanged(bool present);

private:
    friend class StatusNotifierItemAdaptor;
    void registerWithWatcher();
    void emitItemSignal(const char* name, const QVariantList& arguments = {});

    QDBusConnection bus_;
    QString serviceName_;
    QDBusServiceWatcher* watcherWatch_;
    bool published_ = false;
    TrayPixmaps icon_;
    QString label_;
    QString labelGuide_;
    TrayToolTip toolTip_;
};

} // namespace tallowmere

Q_DECLARE_METATYPE(tallowmere::TrayPixmap)
Q_DECLARE_METATYPE(tallowmere::TrayToolTip)
