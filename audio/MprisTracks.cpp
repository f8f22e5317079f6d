#include "audio/MprisTracks.h"

#include "audio/AudioDetection.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QStringList>
#include <QVariantMap>

namespace tallowmere {

namespace {

constexpr int callTimeoutMs = 500;

QVariantMap mapOf(const QVariant& value)
{
    if (value.canConvert<QDBusArgument>())
        return qdbus_cast<QVariantMap>(value.value<QDBusArgument>());
    return value.toMap();
}

QStringList textsOf(const QVariant& value)
{
    if (value.canConvert<QDBusArgument>())
        return qdbus_cast<QStringList>(value.value<QDBusArgument>());
    if (value.typeId() == QMetaType::QString)
        return {value.toString()};
    return value.toStringList();
}

} // namespace

void MprisTracks::listPlayers()
{
    listed_ = true;
    const QString busName = QStringLiteral("org.freedesktop.DBus");
    const QDBusMessage names = bus_.call(
        QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName, QStringLiteral("ListNames")),
        QDBus::Block, callTimeoutMs);
    if (names.type() != QDBusMessage::ReplyMessage || names.arguments().isEmpty())
        return;
    for (const QString& name : names.arguments().constFirst().toStringList()) {
        if (!name.startsWith(QLatin1StringView("org.mpris.MediaPlayer2.")))
            continue;
        QDBusMessage ask = QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName,
                                                          QStringLiteral("GetConnectionUnixProcessID"));
        ask << name;
        const QDBusMessage pid = bus_.call(ask, QDBus::Block, callTimeoutMs);
        if (pid.type() == QDBusMessage::ReplyMessage && !pid.arguments().isEmpty())
            playerByPid_.insert(pid.arguments().constFirst().toInt(), name);
    }
}

std::optional<QString> MprisTracks::trackOf(int pid)
{
    if (!listed_)
        listPlayers();
    const auto player = playerByPid_.constFind(pid);
    if (player == playerByPid_.constEnd())
        return std::nullopt;
    QDBusMessage ask = QDBusMessage::createMethodCall(*player, QStringLiteral("/org/mpris/MediaPlayer2"),
                                                      QStringLiteral("org.freedesktop.DBus.Properties"),
                                                      QStringLiteral("GetAll"));
    ask << QStringLiteral("org.mpris.MediaPlayer2.Player");
    const QDBusMessage reply = bus_.call(ask, QDBus::Block, callTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    const QVariantMap properties = mapOf(reply.arguments().constFirst());
    if (properties.value(QStringLiteral("PlaybackStatus")).toString() != QLatin1StringView("Playing"))
        return std::nullopt;
    const QVariantMap metadata = mapOf(properties.value(QStringLiteral("Metadata")));
    return audio::formatTrack(textsOf(metadata.value(QStringLiteral("xesam:artist"))),
                              metadata.value(QStringLiteral("xesam:title")).toString());
}

} // namespace tallowmere
