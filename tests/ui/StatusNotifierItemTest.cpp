#include "tests/support/PrivateBus.h"
#include "tests/support/TestSupport.h"
#include "tests/ui/TrayTestKit.h"
#include "ui/tray/MenuBarController.h"
#include "ui/tray/StatusNotifierItem.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMenu>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kItemInterface = QStringLiteral("org.kde.StatusNotifierItem");

// The panel's side: a watcher that takes registrations, and a host that reads the item and
// clicks it, on a connection of its own.
class StandInPanel : public QDBusVirtualObject {
public:
    explicit StandInPanel(QDBusConnection bus)
        : bus_(std::move(bus))
    {
    }

    bool start()
    {
        return bus_.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), this)
            && bus_.registerService(kWatcher);
    }
    void stop()
    {
        bus_.unregisterService(kWatcher);
        bus_.unregisterObject(QStringLiteral("/StatusNotifierWatcher"));
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        if (message.member() != u"RegisterStatusNotifierItem")
            return false;
        registrations << message.arguments().value(0).toString();
        connection.send(message.createReply());
        return true;
    }
    QString introspect(const QString&) const override { return {}; }

    QVariant property(const QString& service, const QString& name) const
    {
        QDBusMessage get = QDBusMessage::createMethodCall(service, QStringLiteral("/StatusNotifierItem"),
                                                          QStringLiteral("org.freedesktop.DBus.Properties"),
                                                          QStringLiteral("Get"));
        get << kItemInterface << name;
        const QDBusMessage reply = bus_.call(get, QDBus::BlockWithGui, 5000);
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }

    void click(const QString& service, const QString& method, int x, int y) const
    {
        QDBusMessage call = QDBusMessage::createMethodCall(service, QStringLiteral("/StatusNotifierItem"),
                                                           kItemInterface, method);
        call << x << y;
        bus_.call(call, QDBus::BlockWithGui, 5000);
    }

    QDBusConnection bus_;
    QStringList registrations;
};

struct WirePixmap {
    int width = 0;
    int height = 0;
    qsizetype bytes = 0;
};

// Pixmaps as a panel reads them off the wire: a(iiay).
QList<WirePixmap> readPixmaps(const QDBusArgument& arg)
{
    QList<WirePixmap> pixmaps;
    arg.beginArray();
    while (!arg.atEnd()) {
        WirePixmap p;
        QByteArray bytes;
        arg.beginStructure();
        arg >> p.width >> p.height >> bytes;
        arg.endStructure();
        p.bytes = bytes.size();
        pixmaps << p;
    }
    arg.endArray();
    return pixmaps;
}

// Connection names are process-wide; each test's bus gets names of its own.
QString connectionName(const char* role)
{
    static int round = 0;
    return QStringLiteral("sni-%1-%2").arg(QLatin1String(role)).arg(++round);
}

class StatusNotifierItemTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.isUp()); }

    bool itemOnBus(const QString& service) const
    {
        return panelBus.interface()->isServiceRegistered(service).value();
    }

    test::PrivateBus bus;
    QDBusConnection panelBus = bus.connection(connectionName("panel"));
    QDBusConnection appBus = bus.connection(connectionName("app"));
    StandInPanel panel{panelBus};
    test::TrayTestKit kit;
};

} // namespace

TEST_F(StatusNotifierItemTest, RegistersAndPublishesIconLabelAndToolTip)
{
    ASSERT_TRUE(panel.start());
    MenuBarController controller(appBus);
    controller.installStatusItem();
    EXPECT_FALSE(controller.hasStatusItem()) << "no services handed over yet";

    controller.setServices(kit.services());
    controller.installStatusItem();
    controller.installStatusItem();
    ASSERT_TRUE(test::waitUntil([&] { return !panel.registrations.isEmpty(); }));
    ASSERT_TRUE(controller.usesStatusNotifier());
    const QString service = panel.registrations.first();
    EXPECT_EQ(service, controller.statusNotifierItem()->serviceName());

    const QDBusArgument icon = panel.property(service, QStringLiteral("IconPixmap")).value<QDBusArgument>();
    EXPECT_EQ(icon.currentSignature(), "a(iiay)");
    const QList<WirePixmap> pixmaps = readPixmaps(icon);
    QList<int> sizes;
    for (const WirePixmap& p : pixmaps) {
        EXPECT_EQ(p.width, p.height);
        EXPECT_EQ(p.bytes, qsizetype(p.width) * p.height * 4);
        sizes << p.width;
    }
    EXPECT_EQ(sizes, (QList<int>{16, 22, 24, 32, 44, 48, 64, 96}));

    kit.cpu.monitor().sample();
    kit.memory.monitor().sample();
    ASSERT_TRUE(test::waitUntil([&] { return !kit.memory.monitor().history().isEmpty(); }));
    const StripFigures expected = StripFigures::read(kit.cpu, kit.memory, kit.network, kit.battery);
    ASSERT_TRUE(test::waitUntil(
        [&] { return panel.property(service, QStringLiteral("XAyatanaLabel")).toString() == stripLabel(expected); }));
    EXPECT_EQ(panel.property(service, QStringLiteral("XAyatanaLabelGuide")).toString(), stripLabelGuide(expected));
    EXPECT_EQ(panel.property(service, QStringLiteral("Title")).toString(), "Tallowmere");
    EXPECT_EQ(panel.property(service, QStringLiteral("Status")).toString(), "Active");

    const QDBusArgument tip = panel.property(service, QStringLiteral("ToolTip")).value<QDBusArgument>();
    EXPECT_EQ(tip.currentSignature(), "(sa(iiay)ss)");
    QString iconName, title, description;
    tip.beginStructure();
    tip >> iconName;
    readPixmaps(tip);
    tip >> title >> description;
    tip.endStructure();
    EXPECT_EQ(title, "Tallowmere");
    EXPECT_EQ(description, stripToolTip(expected));
    EXPECT_EQ(panel.registrations.size(), 1) << "installing twice makes one item";
}

TEST_F(StatusNotifierItemTest, ClicksToggleThePopoverAndOpenTheMenu)
{
    ASSERT_TRUE(panel.start());
    MenuBarController controller(appBus);
    controller.setServices(kit.services());
    controller.installStatusItem();
    ASSERT_TRUE(test::waitUntil([&] { return !panel.registrations.isEmpty(); }));
    const QString service = panel.registrations.first();

    panel.click(service, QStringLiteral("Activate"), 400, 30);
    ASSERT_TRUE(test::waitUntil([&] { return controller.popover()->isVisible(); }));
    panel.click(service, QStringLiteral("Activate"), 400, 30);
    ASSERT_TRUE(test::waitUntil([&] { return !controller.popover()->isVisible(); }));

    panel.click(service, QStringLiteral("ContextMenu"), 400, 30);
    QMenu* menu = nullptr;
    ASSERT_TRUE(test::waitUntil([&] {
        menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        return menu != nullptr;
    }));
    QStringList titles;
    for (QAction* action : menu->actions())
        titles << action->text();
    EXPECT_EQ(titles, (QStringList{"Open Tallowmere", "Quit"}));
    menu->close();

    // Turning the tray off closes an open popover and takes the item off the bus.
    panel.click(service, QStringLiteral("Activate"), 400, 30);
    ASSERT_TRUE(test::waitUntil([&] { return controller.popover()->isVisible(); }));
    QPointer<MenuBarStatsPopover> popover = controller.popover();
    controller.removeStatusItem();
    EXPECT_TRUE(popover.isNull());
    EXPECT_TRUE(test::waitUntil([&] { return !itemOnBus(service); }));
}

// Without a panel the plain tray icon stands in; once a watcher appears, and again whenever it
// restarts, the item registers itself under the same name.
TEST_F(StatusNotifierItemTest, FallsBackWithoutAWatcherAndRegistersWheneverOneAppears)
{
    MenuBarController controller(appBus);
    controller.setServices(kit.services());
    controller.installStatusItem();
    EXPECT_TRUE(controller.hasStatusItem());
    EXPECT_FALSE(controller.usesStatusNotifier());

    ASSERT_TRUE(panel.start());
    ASSERT_TRUE(test::waitUntil([&] { return panel.registrations.size() == 1; }));
    EXPECT_TRUE(controller.usesStatusNotifier());
    panel.stop();
    ASSERT_TRUE(panel.start());
    EXPECT_TRUE(test::waitUntil([&] { return panel.registrations.size() == 2; }));
    EXPECT_EQ(panel.registrations[1], panel.registrations[0]);
}
