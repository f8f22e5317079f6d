#include "ui/tray/StatusNotifierItem.h"

#include "ui/tray/StatusNotifierItemAdaptor.h"

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QtEndian>

namespace tallowmere {

namespace {
const QString kItemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString kWatcherPath = QStringLiteral("/StatusNotifierWatcher");

void registerTypes()
{
    static const bool done = [] {
        qDBusRegisterMetaType<TrayPixmap>();
        qDBusRegisterMetaType<TrayPixmaps>();
        qDBusRegisterMetaType<TrayToolTip>();
        return true;
    }();
    (void)done;
}
} // namespace

TrayPixmap TrayPixmap::fromImage(const QImage& image)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    TrayPixmap p{argb.width(), argb.height(), {}};
    p.bytes.resize(qsizetype(argb.width()) * argb.height() * 4);
    auto* out = reinterpret_cast<quint32*>(p.bytes.data());
    for (int y = 0; y < argb.height(); ++y) {
        const auto* row = reinterpret_cast<const quint32*>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x)
            *out++ = qToBigEndian(row[x]);
    }
    return p;
}

QDBusArgument& operator<<(QDBusArgument& arg, const TrayPixmap& pixmap)
{
    arg.beginStructure();
    arg << pixmap.width << pixmap.height << pixmap.bytes;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, TrayPixmap& pixmap)
{
    arg.beginStructure();
    arg >> pixmap.width >> pixmap.height >> pixmap.bytes;
    arg.endStructure();
    return arg;
}

QDBusArgument& operator<<(QDBusArgument& arg, const TrayToolTip& tip)
{
    arg.beginStructure();
    arg << tip.iconName << tip.icons << tip.title << tip.description;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, TrayToolTip& tip)
{
    arg.beginStructure();
    arg >> tip.iconName >> tip.icons >> tip.title >> tip.description;
    arg.endStructure();
    return arg;
}

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , bus_(std::move(bus))
    , watcherWatch_(new QDBusServiceWatcher(QString::fromLatin1(kWatcherService), bus_,
                                            QDBusServiceWatcher::WatchForOwnerChange, this))
{
    registerTypes();
    static int instance = 0;
    serviceName_ = QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(QCoreApplication::applicationPid()).arg(++instance);
    toolTip_.title = QStringLiteral("Tallowmere");
    new StatusNotifierItemAdaptor(this);
    connect(watcherWatch_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) {
                if (!newOwner.isEmpty())
                    registerWithWatcher();
                emit watcherChanged(!newOwner.isEmpty());
            });
}

StatusNotifierItem::~StatusNotifierItem()
{
    if (published_) {
        bus_.unregisterObject(QString::fromLatin1(kItemPath));
        bus_.unregisterService(serviceName_);
    }
}

bool StatusNotifierItem::watcherPresent() const
{
    QDBusConnectionInterface* iface = bus_.interface();
    return iface && iface->isServiceRegistered(QString::fromLatin1(kWatcherService)).value();
}

bool StatusNotifierItem::publish()
{
    if (!published_) {
        if (!bus_.registerObject(QString::fromLatin1(kItemPath), this, QDBusConnection::ExportAdaptors))
            return false;
        if (!bus_.registerService(serviceName_)) {
            bus_.unregisterObject(QString::fromLatin1(kItemPath));
            return false;
        }
        published_ = true;
    }
    registerWithWatcher();
    return true;
}

void StatusNotifierItem::registerWithWatcher()
{
    if (!published_)
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(QString::fromLatin1(kWatcherService), kWatcherPath,
                                                       QString::fromLatin1(kWatcherService),
                                                       QStringLiteral("RegisterStatusNotifierItem"));
    call << serviceName_;
    // No reply is awaited: a watcher that is slow to answer must not stall the interface.
    bus_.send(call);
}

void StatusNotifierItem::emitItemSignal(const char* name, const QVariantList& arguments)
{
    if (!published_)
        return;
    QDBusMessage signal =
        QDBusMessage::createSignal(QString::fromLatin1(kItemPath), kItemInterface, QString::fromLatin1(name));
    signal.setArguments(arguments);
    bus_.send(signal);
}

void StatusNotifierItem::setIcon(const TrayPixmaps& pixmaps)
{
    const bool same = pixmaps.size() == icon_.size()
        && std::equal(pixmaps.begin(), pixmaps.end(), icon_.begin(), [](const TrayPixmap& a, const TrayPixmap& b) {
               return a.width == b.width && a.height == b.height && a.bytes == b.bytes;
           });
    if (same)
        return;
    icon_ = pixmaps;
    emitItemSignal("NewIcon");
}

void StatusNotifierItem::setLabel(const QString& label, const QString& guide)
{
    if (label == label_ && guide == labelGuide_)
        return;
    label_ = label;
    labelGuide_ = guide;
    emitItemSignal("XAyatanaNewLabel", {label_, labelGuide_});
}

void StatusNotifierItem::setToolTip(const QString& title, const QString& description)
{
    if (title == toolTip_.title && description == toolTip_.description)
        return;
    toolTip_.title = title;
    toolTip_.description = description;
    emitItemSignal("NewToolTip");
}

} // namespace tallowmere

