#include "audio/AudioVolumeService.h"

#include "tests/audio/PulseServer.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <pulse/volume.h>

using namespace tallowmere;
using namespace std::chrono_literals;

namespace {

QStringList namesOf(const QList<AudioAppSession>& sessions)
{
    QStringList names;
    for (const AudioAppSession& s : sessions)
        names << s.name;
    return names;
}

const AudioAppSession* sessionOf(const AudioVolumeService& service, const QString& id)
{
    for (const AudioAppSession& s : service.sessions())
        if (s.id == id)
            return &s;
    return nullptr;
}

class AudioVolumeServiceTest : public ::testing::Test {
protected:
    AudioVolumeServiceTest()
    {
        for (const char* id : {"org.example.Alpha", "org.example.Zoom", "org.example.Studio", "org.example.Caller"}) {
            const QString name = QString::fromLatin1(id).section(u'.', 2);
            test::writeFile(data.path(), QStringLiteral("applications/%1.desktop").arg(QLatin1StringView(id)),
                            QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nIcon=%2\nExec=%2 --play\n")
                                .arg(name == QLatin1StringView("Zoom") ? QStringLiteral("zoom") : name, name.toLower())
                                .toUtf8());
        }
    }

    std::unique_ptr<AudioVolumeService> makeService(QByteArray address = {})
    {
        AudioEnvironment env;
        env.server.server = address.isEmpty() ? server.address() : address;
        env.server.retryDelay = 100ms;
        env.dataDirs = {data.path()};
        env.period = 200ms;
        return std::make_unique<AudioVolumeService>(preferences, env);
    }

    // Every channel of every stream of `pid` at this linear gain.
    bool streamsOfAt(int pid, double gain, int expectedStreams = 1)
    {
        const pa_volume_t wanted = pa_sw_volume_from_linear(gain);
        int found = 0;
        for (const auto& stream : server.streams()) {
            if (stream.pid != pid)
                continue;
            ++found;
            for (std::uint32_t v : stream.channelVolumes)
                if (v != wanted)
                    return false;
        }
        return found == expectedStreams;
    }

    test::PulseServer server;
    QTemporaryDir data;
    QTemporaryDir config;
    PreferencesStore preferences{config.filePath(QStringLiteral("preferences.json"))};
};

} // namespace

TEST_F(AudioVolumeServiceTest, ListsPlayingApplicationsAndSetsEveryStreamOfOne)
{
    auto alpha = server.play({"application.id=org.example.Alpha"});
    auto zoom = server.play({"application.id=org.example.Zoom"});
    // The studio plays through two helper processes of its own.
    auto studio = server.runApplication(QStringLiteral("studio"), QStringLiteral("$PLAY & $PLAY & wait"));
    // The caller plays and records at once.
    auto caller = server.play({"application.id=org.example.Caller"});
    auto recorder = server.runApplication(
        QStringLiteral("recorder"),
        QStringLiteral("exec parec -d out.monitor --property=application.process.id=%1 >/dev/null").arg(caller.pid()));

    auto service = makeService();
    ASSERT_TRUE(test::waitUntil([&] { return service->isMixerAvailable(); }));
    service->start();
    ASSERT_TRUE(test::waitUntil([&] { return namesOf(service->sessions()) == QStringList{"Alpha", "Studio", "zoom"}; }))
        << namesOf(service->sessions()).join(u',').toStdString();

    const AudioAppSession studioSession = *sessionOf(*service, QStringLiteral("org.example.Studio"));
    EXPECT_EQ(studioSession.pid, studio.pid());
    EXPECT_EQ(studioSession.subtitle, QStringLiteral("Playing audio"));
    EXPECT_EQ(studioSession.icon, QStringLiteral("studio"));
    EXPECT_EQ(studioSession.volume, 100);
    EXPECT_FALSE(studioSession.isMuted);

    service->setVolume(QStringLiteral("org.example.Studio"), 40);
    int studioStreams = 0;
    ASSERT_TRUE(test::waitUntil([&] {
        studioStreams = 0;
        const pa_volume_t wanted = pa_sw_volume_from_linear(0.4);
        bool all = true;
        for (const auto& stream : server.streams()) {
            if (stream.pid == alpha.pid() || stream.pid == zoom.pid() || stream.pid == caller.pid())
                continue;
            ++studioStreams;
            for (std::uint32_t v : stream.channelVolumes)
                all = all && v == wanted;
        }
        return all && studioStreams == 2;
    }));
    EXPECT_TRUE(streamsOfAt(alpha.pid(), 1.0));
    EXPECT_EQ(sessionOf(*service, QStringLiteral("org.example.Studio"))->volume, 40);

    EXPECT_EQ(service->client().deviceDescriptions(), QStringList{"Null Output"});
}

TEST_F(AudioVolumeServiceTest, OutputLevelFollowsVolumeAndMute)
{
    auto solo = server.play({"application.id=org.example.Alpha"});
    auto service = makeService();
    service->start();
    ASSERT_TRUE(test::waitUntil([&] { return service->sessions().size() == 1; }));
    const double full = server.level();
    ASSERT_GT(full, 0.2); // a half-scale sine

    const QString id = QStringLiteral("org.example.Alpha");
    service->setVolume(id, 40);
    ASSERT_TRUE(test::waitUntil([&] { return streamsOfAt(solo.pid(), 0.4); }));
    EXPECT_NEAR(server.level() / full, 0.4, 0.4 * 0.05);

    service->toggleMute(id);
    ASSERT_TRUE(test::waitUntil([&] { return streamsOfAt(solo.pid(), 0.0); }));
    EXPECT_LT(server.level(), full * 0.01);
    EXPECT_TRUE(sessionOf(*service, id)->isMuted);

    service->toggleMute(id);
    ASSERT_TRUE(test::waitUntil([&] { return streamsOfAt(solo.pid(), 0.4); }));
    EXPECT_NEAR(server.level() / full, 0.4, 0.4 * 0.05);
}

TEST_F(AudioVolumeServiceTest, StreamsAppearingWhileClosedGetTheirStoredVolumes)
{
    auto service = makeService();
    ASSERT_TRUE(test::waitUntil([&] { return service->isMixerAvailable(); }));
    service->setVolume(QStringLiteral("org.example.Alpha"), 40);
    service->setVolume(QStringLiteral("org.example.Zoom"), 70);
    service->start();
    service->stop();
    ASSERT_FALSE(service->isPolling());
    // Zoom was muted in an earlier run.
    preferences.setValue(QStringLiteral("audioMuteOverrides"), QJsonObject{{"org.example.Zoom", true}});

    auto alpha = server.play({"application.id=org.example.Alpha"});
    auto zoom = server.play({"application.id=org.example.Zoom"});
    auto caller = server.play({"application.id=org.example.Caller"});
    EXPECT_TRUE(test::waitUntil([&] { return streamsOfAt(alpha.pid(), 0.4); }));
    EXPECT_TRUE(test::waitUntil([&] { return streamsOfAt(zoom.pid(), 0.0); }));
    // Never chosen: left as the server made it.
    EXPECT_TRUE(streamsOfAt(caller.pid(), 1.0));
    EXPECT_TRUE(service->sessions().isEmpty());
}

TEST_F(AudioVolumeServiceTest, SurvivesTheServerRestarting)
{
    auto service = makeService();
    service->start();
    auto first = server.play({"application.id=org.example.Alpha"});
    ASSERT_TRUE(test::waitUntil([&] { return service->sessions().size() == 1; }));

    server.kill();
    ASSERT_TRUE(test::waitUntil([&] { return !service->isMixerAvailable(); }));
    EXPECT_TRUE(service->sessions().isEmpty());

    ASSERT_TRUE(server.start());
    ASSERT_TRUE(test::waitUntil([&] { return service->isMixerAvailable(); }));
    service->setVolume(QStringLiteral("org.example.Zoom"), 25);
    auto second = server.play({"application.id=org.example.Zoom"});
    EXPECT_TRUE(test::waitUntil([&] { return namesOf(service->sessions()) == QStringList{"zoom"}; }));
    EXPECT_TRUE(test::waitUntil([&] { return streamsOfAt(second.pid(), 0.25); }));
    EXPECT_TRUE(service->isPolling());
}

TEST_F(AudioVolumeServiceTest, WithoutAServerTheMixerIsUnavailable)
{
    auto service = makeService("unix:" + server.path(QStringLiteral("nobody-here")).toUtf8());
    QTest::qWait(300); // a few connection attempts
    EXPECT_FALSE(service->isMixerAvailable());
    service->start();
    service->refresh();
    EXPECT_FALSE(service->isPolling());
    EXPECT_TRUE(service->sessions().isEmpty());
    EXPECT_FALSE(service->client().deviceDescriptions().has_value());
}
