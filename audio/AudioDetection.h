#pragma once

#include "audio/AudioSession.h"
#include "audio/DesktopEntryIndex.h"
#include "audio/ProcessInfo.h"
#include "audio/PulseSnapshot.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace tallowmere::audio {

// Parents tried after the stream's own process before giving up on an owner.
inline constexpr int maxParents = 7;

struct DetectionContext {
    int ownPid = 0;
    QString ownId;
    std::function<std::optional<ProcessInfo>(int pid)> process;
    const DesktopEntryIndex* entries = nullptr;
    // "Artist — Title" of what the application's media player is playing, if it plays.
    std::function<std::optional<QString>(int pid)> nowPlaying;
};

struct StreamOwner {
    int pid = 0;
    DesktopEntry entry;
};

// The application a stream belongs to: the first process up the parent chain that has a
// desktop entry (the stream's own application id counts for its process), then further up
// while the parent runs the same program, as multi-process browsers do.
std::optional<StreamOwner> attributeStream(const PlaybackStream& stream, const DetectionContext& context);

// The applications playing now, grouped by owner and sorted by name. Paused streams, processes
// that also record, and this program are left out.
QList<AudioPlayingApp> detectPlayingApps(const PulseSnapshot& snapshot, const DetectionContext& context);

bool isBrowserId(const QString& id);
QString subtitleFor(const QString& id, const std::optional<QString>& track);
// "Artist — Title"; only the title when no artist is known; absent without a title.
std::optional<QString> formatTrack(const QStringList& artists, const QString& title);

// Locale-aware, case-insensitive and stable.
void sortByName(QList<AudioPlayingApp>& apps);

} // namespace tallowmere::audio
