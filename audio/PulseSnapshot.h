#pragma once

#include <QList>
#include <QString>

#include <cstdint>

namespace tallowmere {

// One playing stream (sink input) as the sound server describes it.
struct PlaybackStream {
    std::uint32_t index = 0;
    std::int32_t pid = 0; // application.process.id, 0 when absent
    QString applicationName;
    QString applicationId;
    QString portalAppId;
    bool corked = false;
    int channels = 2;
    double volume = 1.0; // linear amplitude of its loudest channel

    bool operator==(const PlaybackStream&) const = default;
};

// The streams and the default output at one moment. A failed query leaves its part empty.
struct PulseSnapshot {
    QString defaultSink;
    QList<PlaybackStream> playback;
    // Processes that have a recording stream (source output) open.
    QList<std::int32_t> recordingPids;

    bool operator==(const PulseSnapshot&) const = default;
};

} // namespace tallowmere
