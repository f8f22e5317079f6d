#include "audio/AudioDetection.h"
#include "audio/AudioMixerEngine.h"

#include <gtest/gtest.h>

#include <QHash>

using namespace tallowmere;
using namespace tallowmere::audio;

namespace {

// A process tree and the installed applications, as plain values.
struct Machine {
    QHash<int, ProcessInfo> processes;
    DesktopEntryIndex entries;
    QHash<int, QString> tracks;

    DetectionContext context(int ownPid = 10)
    {
        DetectionContext c;
        c.ownPid = ownPid;
        c.ownId = QStringLiteral("tallowmere");
        c.process = [this](int pid) { return processes.contains(pid) ? std::optional(processes[pid]) : std::nullopt; };
        c.entries = &entries;
        c.nowPlaying = [this](int pid) { return tracks.contains(pid) ? std::optional(tracks[pid]) : std::nullopt; };
        return c;
    }
};

DesktopEntry app(const char* id, const char* name, const char* executable)
{
    return {QString::fromLatin1(id), QString::fromLatin1(name), QStringLiteral("icon-") + QLatin1StringView(id),
            QString::fromLatin1(executable), {}};
}

PlaybackStream stream(std::uint32_t index, int pid, const char* appId = "")
{
    return {index, pid, {}, QString::fromLatin1(appId), {}, false, 2, 1.0};
}

QStringList names(const QList<AudioPlayingApp>& apps)
{
    QStringList result;
    for (const AudioPlayingApp& a : apps)
        result << a.name;
    return result;
}

} // namespace

TEST(AudioDetection, GroupsStreamsUnderTheirApplicationsSortedByName)
{
    Machine m;
    m.entries.add(app("org.example.Zoom", "zoom", "zoom"));
    m.entries.add(app("firefox-esr", "Firefox ESR", "firefox-esr"));
    m.entries.add(app("org.example.Alpha", "Alpha", "alpha"));
    m.entries.add(app("org.example.Beta", "alpha", "beta"));
    // The browser: main process 100, its content process 101 plays through its audio helper 102.
    m.processes = {{100, {50, "firefox-esr"}}, {101, {100, "firefox-esr"}}, {102, {101, "firefox-esr"}},
                   {50, {1, "systemd"}},       {200, {50, "zoom"}},         {300, {50, "alpha"}},
                   {301, {300, "pacat"}},      {400, {50, "beta"}},         {500, {1, "daemon"}}};
    m.tracks = {{300, QStringLiteral("Artist \u2014 Song")}};
    PulseSnapshot snapshot;
    snapshot.playback = {stream(1, 200), stream(2, 102), stream(3, 301), stream(4, 400), stream(5, 500),
                         stream(6, 101), stream(7, 200, "org.example.Zoom")};

    const QList<AudioPlayingApp> apps = detectPlayingApps(snapshot, m.context());

    // Case-insensitive and stable: "Alpha" (found first) before "alpha", both before "zoom".
    EXPECT_EQ(names(apps), (QStringList{"Alpha", "alpha", "Firefox ESR", "zoom"}));
    EXPECT_EQ(apps[0].pid, 300);
    EXPECT_EQ(apps[0].objectIDs, (QList<std::uint32_t>{3}));
    EXPECT_EQ(apps[0].subtitle, QStringLiteral("Artist \u2014 Song"));
    EXPECT_EQ(apps[0].icon, QStringLiteral("icon-org.example.Alpha"));
    EXPECT_EQ(apps[2].pid, 100);
    EXPECT_EQ(apps[2].id, QStringLiteral("firefox-esr"));
    EXPECT_EQ(apps[2].objectIDs, (QList<std::uint32_t>{2, 6}));
    EXPECT_EQ(apps[2].subtitle, QStringLiteral("Browser tab"));
    EXPECT_EQ(apps[3].objectIDs, (QList<std::uint32_t>{1, 7}));
    EXPECT_EQ(apps[3].subtitle, QStringLiteral("Playing audio"));
}

TEST(AudioDetection, LeavesOutPausedRecordingOwnAndOwnerlessStreams)
{
    Machine m;
    m.entries.add(app("org.example.Player", "Player", "player"));
    m.entries.add(app("tallowmere", "Tallowmere", "tallowmere"));
    // A chain of eight helpers below the player is one too long; one ending at pid 1 has no owner.
    m.processes = {{20, {1, "player"}}, {30, {20, "player"}}, {11, {10, "tallowmere"}}, {12, {1, "tallowmere"}}};
    for (int pid = 41; pid <= 48; ++pid)
        m.processes.insert(pid, {pid == 41 ? 20 : pid - 1, "helper"});
    m.processes.insert(60, {1, "orphan"});
    m.processes.insert(70, {70, "loop"});
    PulseSnapshot snapshot;
    PlaybackStream paused = stream(1, 20);
    paused.corked = true;
    snapshot.playback = {paused, stream(2, 30), stream(3, 10), stream(4, 11), stream(5, 12),
                         stream(6, 48), stream(7, 47), stream(8, 60), stream(9, 70), stream(10, 0), stream(11, 99)};
    snapshot.recordingPids = {30};

    const QList<AudioPlayingApp> apps = detectPlayingApps(snapshot, m.context(10));

    // Only the helper seven steps below the player remains.
    ASSERT_EQ(apps.size(), 1);
    EXPECT_EQ(apps[0].pid, 20);
    EXPECT_EQ(apps[0].objectIDs, (QList<std::uint32_t>{7}));
}

TEST(AudioDetection, SubtitlesAndTracks)
{
    EXPECT_EQ(formatTrack({"Nina Simone"}, "Feeling Good"), QStringLiteral("Nina Simone \u2014 Feeling Good"));
    EXPECT_EQ(formatTrack({"A", "B"}, " Duet "), QStringLiteral("A, B \u2014 Duet"));
    EXPECT_EQ(formatTrack({}, "Podcast"), QStringLiteral("Podcast"));
    EXPECT_FALSE(formatTrack({"Artist"}, " ").has_value());
    for (const char* id : {"firefox", "org.mozilla.firefox", "chromium", "google-chrome", "com.brave.Browser"})
        EXPECT_EQ(subtitleFor(QString::fromLatin1(id), std::nullopt), QStringLiteral("Browser tab")) << id;
    EXPECT_EQ(subtitleFor("firefox", QStringLiteral("A \u2014 T")), QStringLiteral("A \u2014 T"));
    EXPECT_EQ(subtitleFor("org.gnome.Rhythmbox3", std::nullopt), QStringLiteral("Playing audio"));
}

TEST(AudioDetection, DesktopEntriesGiveNamesIconsAndPrograms)
{
    const auto entry = parseDesktopEntry(QStringLiteral("org.example.Radio"),
                                         "[Desktop Entry]\nType=Application\nName=Radio\nName[de]=Funk\n"
                                         "Icon=radio\nExec=env GDK_BACKEND=x11 /opt/radio/bin/radio-app %U\n"
                                         "[Desktop Action quiet]\nName=Quiet\nExec=other\n");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(*entry, (DesktopEntry{"org.example.Radio", "Radio", QStringLiteral("radio"), "radio-app", {}}));
    EXPECT_FALSE(parseDesktopEntry("x", "[Desktop Entry]\nType=Application\nName=X\nHidden=true\n").has_value());
    EXPECT_FALSE(parseDesktopEntry("x", "[Desktop Entry]\nType=Link\nName=X\n").has_value());

    DesktopEntryIndex index;
    index.add({"chromium", "Chromium", std::nullopt, "chromium", "Chromium-browser"});
    index.add({"Chromium", "Shadowed", std::nullopt, "other", {}});
    EXPECT_EQ(index.findById("CHROMIUM")->name, QStringLiteral("Chromium"));
    EXPECT_EQ(index.findByExecutable("chromium-browser")->id, QStringLiteral("chromium"));
    EXPECT_EQ(index.findByExecutable("other"), nullptr);
}

TEST(AudioMixerEngine, AppliesStoredGainsToNewStreamsOnlyAndHandlesAtMost64)
{
    QStringList writes; // "stream/channels/gain"
    AudioMixerEngine engine([&](std::uint32_t index, int channels, float gain) {
        writes << QStringLiteral("%1/%2/%3").arg(index).arg(channels).arg(gain);
    });
    const auto gains = [](const QString& id) { return id == QLatin1StringView("quiet") ? std::optional(0.4f) : std::nullopt; };
    AudioPlayingApp quiet{1, {1, 2}, "quiet", "Quiet", {}, {}};
    const AudioPlayingApp loud{2, {4}, "loud", "Loud", {}, {}};
    PulseSnapshot snapshot{"speakers", {stream(1, 1), stream(2, 1), stream(4, 2)}, {}};
    snapshot.playback[1].channels = 6;
    const auto update = [&](const QList<AudioPlayingApp>& apps) {
        writes.clear();
        engine.update(apps, snapshot, gains);
        return writes;
    };

    EXPECT_EQ(update({quiet, loud}), (QStringList{"1/2/0.4", "2/6/0.4"}));
    // The same streams again write nothing; a new stream of the app gets the gain.
    EXPECT_EQ(update({quiet, loud}), QStringList{});
    quiet.objectIDs.append(5);
    EXPECT_EQ(update({quiet, loud}), QStringList{"5/2/0.4"});
    // Another default output re-applies while something plays, not while nothing does.
    snapshot.defaultSink = QStringLiteral("headphones");
    EXPECT_EQ(update({quiet, loud}).size(), 3);
    snapshot.defaultSink = QStringLiteral("hdmi");
    EXPECT_EQ(update({}), QStringList{});

    // setGain reaches every stream of the app, clamped.
    update({quiet, loud});
    writes.clear();
    engine.setGain("quiet", 1.5f);
    engine.setGain("loud", -1.0f);
    EXPECT_EQ(writes, (QStringList{"1/2/1", "2/6/1", "5/2/1", "4/2/0"}));

    // 70 streams: the first 64 in list order are handled.
    AudioPlayingApp many{3, {}, "quiet", "Many", {}, {}};
    for (std::uint32_t i = 100; i < 170; ++i)
        many.objectIDs.append(i);
    EXPECT_EQ(update({many}).size(), 64);
    EXPECT_TRUE(engine.isHandled(163));
    EXPECT_FALSE(engine.isHandled(164));
}
