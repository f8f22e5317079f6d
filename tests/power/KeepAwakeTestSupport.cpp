#include "tests/power/KeepAwakeTestSupport.h"

#include "tests/support/TestSupport.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>


namespace tallowmere::test {

InhibitBus::~InhibitBus()
{
    // Named connections are shared process-wide; the next test must get a fresh one.
    QDBusConnection::disconnectFromBus(QStringLiteral("keepawake"));
    if (screenSaver_) {
        screenSaver_->terminate();
        screenSaver_->waitForFinished(3000);
    }
}

bool InhibitBus::start()
{
    if (!bus_.isUp() || !bus_.startTemplate(QStringLiteral("logind"), QStringLiteral("org.freedesktop.login1")))
        return false;
    // No template speaks the freedesktop screen saver interface: a bare mock object gets its
    // two methods, and logs each call on its standard output.
    const QString name = QStringLiteral("org.freedesktop.ScreenSaver");
    const QString path = QStringLiteral("/org/freedesktop/ScreenSaver");
    screenSaver_ = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus_.address());
    screenSaver_->setProcessEnvironment(env);
    screenSaver_->start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-m"), QStringLiteral("dbusmock"),
                                                              QStringLiteral("--session"), name, path, name});
    if (!waitUntil([&] { return connection().interface()->isServiceRegistered(name).value(); }, 10000))
        return false;
    const auto add = [&](const char* method, const char* in, const char* out, const char* code) {
        return bus_.callMock(name, path, QStringLiteral("AddMethod"),
                             {name, QString::fromLatin1(method), QString::fromLatin1(in), QString::fromLatin1(out),
                              QString::fromLatin1(code)}).type() == QDBusMessage::ReplyMessage;
    };
    return add("Inhibit", "ss", "u", "ret = dbus.UInt32(4711)") && add("UnInhibit", "u", "", "");
}

QStringList InhibitBus::heldLocks() const
{
    const QDBusMessage reply = connection().call(
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                                       QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("ListInhibitors")),
        QDBus::Block, 5000);
    if (reply.type() != QDBusMessage::ReplyMessage)
        return {QStringLiteral("<no answer>")};
    QStringList locks;
    const QDBusArgument list = reply.arguments().constFirst().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString what, who, why, mode;
        quint32 uid = 0, pid = 0;
        list.beginStructure();
        list >> what >> who >> why >> mode >> uid >> pid;
        list.endStructure();
        if (who == u"Tallowmere" && why == u"Tallowmere Keep Awake" && mode == u"block")
            locks << what;
    }
    list.endArray();
    locks.sort();
    return locks;
}

int InhibitBus::screenSaverCalls(const char* method)
{
    // Each call is logged as "<time> <method> <arguments>" before it is answered.
    screenSaver_->waitForReadyRead(50);
    screenSaverLog_ += screenSaver_->readAllStandardOutput();
    return static_cast<int>(screenSaverLog_.count(QByteArray(" ") + method));
}

} // namespace tallowmere::test
