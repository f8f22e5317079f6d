#include "power/InhibitorLocks.h"

#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>

namespace tallowmere {

namespace {

const QString appName = QStringLiteral("Tallowmere");
const QString reason = QStringLiteral("Tallowmere Keep Awake");
const QString screenSaverService = QStringLiteral("org.freedesktop.ScreenSaver");
const QString screenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");

// Everything here runs on the main thread: a login manager that hangs must not freeze the
// program for the default 25 s.
constexpr int callTimeoutMs = 3000;

} // namespace

InhibitorLocks::InhibitorLocks(QDBusConnection systemBus, QDBusConnection sessionBus)
    : systemBus_(std::move(systemBus))
    , sessionBus_(std::move(sessionBus))
{
}

UniqueFd InhibitorLocks::inhibit(const QString& what) const
{
    if (!systemBus_.isConnected())
        return {};
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.login1"),
                                                       QStringLiteral("/org/freedesktop/login1"),
                                                       QStringLiteral("org.freedesktop.login1.Manager"),
                                                       QStringLiteral("Inhibit"));
    call << what << appName << reason << QStringLiteral("block");
    const QDBusMessage reply = systemBus_.call(call, QDBus::Block, callTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    const auto descriptor = reply.arguments().constFirst().value<QDBusUnixFileDescriptor>();
    if (!descriptor.isValid())
        return {};
    // The reply's descriptor is closed with the message; the lock must outlive it.
    return UniqueFd(::fcntl(descriptor.fileDescriptor(), F_DUPFD_CLOEXEC, 3));
}

std::optional<quint32> InhibitorLocks::inhibitScreenSaver() const
{
    if (!sessionBus_.isConnected())
        return std::nullopt;
    QDBusMessage call = QDBusMessage::createMethodCall(screenSaverService, screenSaverPath, screenSaverService,
                                                       QStringLiteral("Inhibit"));
    call << appName << reason;
    // A desktop without a screen saver service should not get one started for us.
    call.setAutoStartService(false);
    const QDBusMessage reply = sessionBus_.call(call, QDBus::Block, callTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    bool ok = false;
    const quint32 cookie = reply.arguments().constFirst().toUInt(&ok);
    if (!ok)
        return std::nullopt;
    return cookie;
}

void InhibitorLocks::uninhibitScreenSaver(quint32 cookie) const
{
    if (!sessionBus_.isConnected())
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(screenSaverService, screenSaverPath, screenSaverService,
                                                       QStringLiteral("UnInhibit"));
    call << cookie;
    call.setAutoStartService(false);
    sessionBus_.call(call, QDBus::Block, callTimeoutMs);
}

} // namespace tallowmere
