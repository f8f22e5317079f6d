#include "tests/power/KeepAwakeTestSupport.h"

#include "tests/support/TestSupport.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcessEnvironment>

#include <algorithm>

namespace tallowmere::test {

namespace {
const QString screenSaverName = QStringLiteral("org.freedesktop.ScreenSaver");
const QString screenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");
} // namespace

std::unique_ptr<QObject> ManualClock::sleep(std::chrono::milliseconds delay, std::function<void()> wake)
{
    auto handle = std::make_unique<QObject>();
    sleepers_.push_back({elapsed_ + delay, handle.get(), std::move(wake)});
    return handle;
}

void ManualClock::advance(std::chrono::milliseconds by)
{
    const auto target = elapsed_ + by;
    for (;;) {
        std::erase_if(sleepers_, [](const Sleeper& s) { return s.handle.isNull(); });
        auto next = std::min_element(sleepers_.begin(), sleepers_.end(),
                                     [](const Sleeper& a, const Sleeper& b) { return a.due < b.due; });
        if (next == sleepers_.end() || next->due > target)
            break;
        now_ += next->due - elapsed_;
        elapsed_ = next->due;
        auto wake = std::move(next->wake);
        sleepers_.erase(next);
        wake();
    }
    now_ += target - elapsed_;
    elapsed_ = target;
}

int ManualClock::pendingSleeps() const
{
    return static_cast<int>(std::count_if(sleepers_.begin(), sleepers_.end(),
                                          [](const Sleeper& s) { return !s.handle.isNull(); }));
}

QDBusConnection missingBus()
{
    return QDBusConnection(QStringLiteral("tallowmere-no-such-bus"));
}

InhibitBus::~InhibitBus()
{
    // Named connections are shared process-wide; the next test must get a fresh one.
    QDBusConnection::disconnectFromBus(QStringLiteral("keepawake"));
    if (screenSaver_) {
        screenSaver_->terminate();
        screenSaver_->waitForFinished(3000);
    }
}

bool InhibitBus::start(bool loginManager, bool screenSaver)
{
    if (!bus_.isUp())
        return false;
    if (loginManager && !bus_.startTemplate(QStringLiteral("logind"), QStringLiteral("org.freedesktop.login1")))
        return false;
    if (!screenSaver)
        return true;
    // No template speaks the freedesktop screen saver interface, so a bare mock object is
    // given its two methods.
    screenSaver_ = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus_.address());
    screenSaver_->setProcessEnvironment(env);
    screenSaver_->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    screenSaver_->start(QStringLiteral("/usr/bin/python3"),
                        {QStringLiteral("-m"), QStringLiteral("dbusmock"), QStringLiteral("--session"), screenSaverName,
                         screenSaverPath, screenSaverName});
    QDBusConnection bus = connection();
    if (!waitUntil([&] { return bus.interface()->isServiceRegistered(screenSaverName).value(); }, 10000))
        return false;
    const QDBusMessage inhibit = bus_.callMock(screenSaverName, screenSaverPath, QStringLiteral("AddMethod"),
                                               {screenSaverName, QStringLiteral("Inhibit"), QStringLiteral("ss"),
                                                QStringLiteral("u"), QStringLiteral("ret = dbus.UInt32(4711)")});
    const QDBusMessage uninhibit = bus_.callMock(screenSaverName, screenSaverPath, QStringLiteral("AddMethod"),
                                                 {screenSaverName, QStringLiteral("UnInhibit"), QStringLiteral("u"),
                                                  QString(), QString()});
    return inhibit.type() == QDBusMessage::ReplyMessage && uninhibit.type() == QDBusMessage::ReplyMessage;
}

QStringList InhibitBus::heldLocks() const
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.login1"),
                                                       QStringLiteral("/org/freedesktop/login1"),
                                                       QStringLiteral("org.freedesktop.login1.Manager"),
                                                       QStringLiteral("ListInhibitors"));
    const QDBusMessage reply = connection().call(call, QDBus::Block, 5000);
    QStringList locks;
    if (reply.type() != QDBusMessage::ReplyMessage)
        return {QStringLiteral("<no answer>")};
    const QDBusArgument list = reply.arguments().constFirst().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString what, who, why, mode;
        quint32 uid = 0, pid = 0;
        list.beginStructure();
        list >> what >> who >> why >> mode >> uid >> pid;
        list.endStructure();
        if (who == QLatin1StringView("Tallowmere") && why == QLatin1StringView("Tallowmere Keep Awake")
            && mode == QLatin1StringView("block"))
            locks << what;
    }
    list.endArray();
    locks.sort();
    return locks;
}

std::vector<QVariantList> InhibitBus::screenSaverCalls(const QString& method) const
{
    const QDBusMessage reply = bus_.callMock(screenSaverName, screenSaverPath, QStringLiteral("GetMethodCalls"), {method});
    std::vector<QVariantList> calls;
    if (reply.type() != QDBusMessage::ReplyMessage)
        return calls;
    // a(tav): a time stamp and the arguments of each call.
    const QDBusArgument list = reply.arguments().constFirst().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        quint64 stamp = 0;
        QVariantList arguments;
        list.beginStructure();
        list >> stamp;
        list.beginArray();
        while (!list.atEnd()) {
            QDBusVariant value;
            list >> value;
            arguments << value.variant();
        }
        list.endArray();
        list.endStructure();
        calls.push_back(arguments);
    }
    list.endArray();
    return calls;
}

} // namespace tallowmere::test
