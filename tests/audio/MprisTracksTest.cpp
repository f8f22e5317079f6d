#include "audio/MprisTracks.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QFuture>
#include <QtConcurrent>

using namespace tallowmere;

namespace {

// A media player speaking the player interface, as a music application exports it.
class PlayerStandIn : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus MEMBER status)
    Q_PROPERTY(QVariantMap Metadata MEMBER metadata)
public:
    QString status = QStringLiteral("Playing");
    QVariantMap metadata{{QStringLiteral("xesam:artist"), QStringList{QStringLiteral("Nina Simone")}},
                         {QStringLiteral("xesam:title"), QStringLiteral("Feeling Good")}};
};

// The lookups block on the bus, so they run off this thread while it serves the stand-in.
std::optional<QString> trackOf(const QDBusConnection& bus, int pid)
{
    QFuture<std::optional<QString>> future = QtConcurrent::run([bus, pid] { return MprisTracks(bus).trackOf(pid); });
    test::waitUntil([&] { return future.isFinished(); });
    return future.result();
}

} // namespace

TEST(MprisTracks, TellsWhatTheApplicationsPlayerPlays)
{
    test::PrivateBus bus;
    ASSERT_TRUE(bus.isUp());
    QDBusConnection playerSide = bus.connection(QStringLiteral("player"));
    PlayerStandIn player;
    ASSERT_TRUE(playerSide.registerObject(QStringLiteral("/org/mpris/MediaPlayer2"), &player,
                                          QDBusConnection::ExportAllProperties));
    ASSERT_TRUE(playerSide.registerService(QStringLiteral("org.mpris.MediaPlayer2.standin")));
    const QDBusConnection lookupSide = bus.connection(QStringLiteral("lookup"));
    const int self = static_cast<int>(QCoreApplication::applicationPid());

    EXPECT_EQ(trackOf(lookupSide, self), QStringLiteral("Nina Simone \u2014 Feeling Good"));
    EXPECT_EQ(trackOf(lookupSide, self + 1), std::nullopt);
    player.status = QStringLiteral("Paused");
    EXPECT_EQ(trackOf(lookupSide, self), std::nullopt);

    QDBusConnection::disconnectFromBus(QStringLiteral("player"));
    QDBusConnection::disconnectFromBus(QStringLiteral("lookup"));
}

#include "MprisTracksTest.moc"
