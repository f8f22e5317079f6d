#include "audio/AudioVolumeService.h"

#include "tests/audio/PulseServer.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

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

class AudioVolumeServiceTest : public ::testing::Test {
protected:
    AudioVolumeServiceTest()
    {
        for (const QString name : {"Alpha", "zoom", "Studio", "Caller"})
            test::writeFile(data.path(), QStringLiteral("applications/org.example.%1.desktop").arg(name),
                            QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nIcon=%2\nExec=%2 --play\n")
                                .arg(name, name.toLower()).toUtf8());
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

    test::PulseServer server;
    QTemporaryDir data;
    QTemporaryDir config;
    PreferencesStore preferences{config.filePath(QStringLiteral("preferences.json"))};
};

} // namespace

TEST_F(AudioVolumeServiceTest, ListsPlayingApplicationsAndSetsEveryStreamOfOne)
{
    auto alpha = server.play("application.id=org.example.Alpha");
    auto zoom = server.play("application.id=org.example.zoom");
    // The studio plays through two helper processes of its own.
    auto studio = server.runApplication("studio", "$PLAY & $PLAY & wait");
    // The caller plays and records at once.
    auto caller = server.play("application.id=org.example.Caller");
    auto recorder = server.runApplication(
        "recorder", QStringLiteral("exec parec -d out.monitor --property=application.process.id=%1").arg(caller.pid()));

    auto service = makeService();
    service->start();
    ASSERT_TRUE(test::waitUntil([&] { return namesOf(service->sessions()) == QStringList{"Alpha", "Studio", "zoom"}; }))
        << namesOf(service->sessions()).join(u',').toStdString();
    const AudioAppSession studioSession = service->sessions()[1];
    EXPECT_EQ(studioSession, (AudioAppSession{"org.example.Studio", studio.pid(), "Studio", "Playing audio",
                                              QStringLiteral("studio"), 100, false}));

    service->setVolume("org.example.Studio", 40);
    EXPECT_TRUE(test::waitUntil([&] { return server.streamsAt(0.4) == 2; }));
    EXPECT_EQ(server.streamsAt(1.0), 3);

    EXPECT_EQ(service->client().deviceDescriptions(), QStringList{"Null Output"});
}

TEST_F(AudioVolumeServiceTest, OutputLevelFollowsVolumeAndMute)
{
    auto solo = server.play("application.id=org.example.Alpha");
    auto service = makeService();
    service->start();
    ASSERT_TRUE(test::waitUntil([&] { return service->sessions().size() == 1; }));
    const double full = server.level();
    ASSERT_GT(full, 0.3); // a half-scale sine

    service->setVolume("org.example.Alpha", 40);
    ASSERT_TRUE(test::waitUntil([&] { return server.streamsAt(0.4) == 1; }));
    EXPECT_NEAR(server.level() / full, 0.4, 0.4 * 0.05);

    service->toggleMute("org.example.Alpha");
    ASSERT_TRUE(test::waitUntil([&] { return server.streamsAt(0.0) == 1; }));
    EXPECT_LT(server.level(), full * 0.01);
    EXPECT_TRUE(service->sessions()[0].isMuted);

    // Unmuted, the stream gets its chosen volume back (the level at that gain is measured above).
    service->toggleMute("org.example.Alpha");
    EXPECT_TRUE(test::waitUntil([&] { return server.streamsAt(0.4) == 1; }));
}

TEST_F(AudioVolumeServiceTest, StreamsAppearingWhileClosedGetTheirStoredVolumes)
{
    auto service = makeService();
    ASSERT_TRUE(test::waitUntil([&] { return service->isMixerAvailable(); }));
    service->setVolume("org.example.Alpha", 40);
    service->setVolume("org.example.zoom", 70);
    service->start();
    service->stop();
    // Zoom was muted in an earlier run.
    preferences.setValue(QStringLiteral("audioMuteOverrides"), QJsonObject{{"org.example.zoom", true}});

    auto alpha = server.play("application.id=org.example.Alpha");
    auto zoom = server.play("application.id=org.example.zoom");
    auto caller = server.play("application.id=org.example.Caller");
    EXPECT_TRUE(test::waitUntil([&] { return server.streamsAt(0.4) == 1 && server.streamsAt(0.0) == 1; }));
    // Never chosen: left as the server made it.
    EXPECT_EQ(server.streamsAt(1.0), 1);
    EXPECT_TRUE(service->sessions().isEmpty());
}

TEST_F(AudioVolumeServiceTest, SurvivesTheServerRestarting)
{
    auto service = makeService();
    service->start();
    auto first = server.play("application.id=org.example.Alpha");
    ASSERT_TRUE(test::waitUntil([&] { return service->sessions().size() == 1; }));

    server.kill();
    ASSERT_TRUE(test::waitUntil([&] { return !service->isMixerAvailable(); }));
    EXPECT_TRUE(service->sessions().isEmpty());

    ASSERT_TRUE(server.start());
    ASSERT_TRUE(test::waitUntil([&] { return service->isMixerAvailable(); }));
    service->setVolume("org.example.zoom", 25);
    auto second = server.play("application.id=org.example.zoom");
    EXPECT_TRUE(test::waitUntil([&] { return namesOf(service->sessions()) == QStringList{"zoom"}; }));
    EXPECT_TRUE(test::waitUntil([&] { return server.streamsAt(0.25) == 1; }));
}

TEST_F(AudioVolumeServiceTest, WithoutAServerTheMixerIsUnavailable)
{
    auto service = makeService("unix:" + server.path("nobody-here").toUtf8());
    QTest::qWait(300); // a few connection attempts
    EXPECT_FALSE(service->isMixerAvailable());
    service->start();
    service->refresh();
    EXPECT_FALSE(service->isPolling());
    EXPECT_TRUE(service->sessions().isEmpty());
    EXPECT_FALSE(service->client().deviceDescriptions().has_value());
}
