#pragma once

#include "audio/AudioSession.h"
#include "audio/PulseSnapshot.h"

#include <QList>
#include <QSet>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

namespace tallowmere {

// Applies per-application gains by setting the volumes of the applications' playing streams
// in the sound server, which does the mixing. A stream receives its application's stored gain
// when it first appears (and again when the default output changes while something plays)
// and whenever the user sets one; otherwise its volume is left to whoever else sets it.
class AudioMixerEngine {
public:
    static constexpr int maxStreams = 64;

    // Writes a linear gain to every channel of one stream.
    using VolumeWriter = std::function<void(std::uint32_t index, int channels, float gain)>;
    // The gain an application's new streams get; absent leaves them as the server made them.
    using GainSource = std::function<std::optional<float>(const QString& id)>;

    explicit AudioMixerEngine(VolumeWriter writer) : writer_(std::move(writer)) {}

    void update(const QList<AudioPlayingApp>& apps, const PulseSnapshot& snapshot, const GainSource& gain);
    // Clamped to 0...1, written to every handled stream of `id`.
    void setGain(const QString& id, float gain);

    bool isHandled(std::uint32_t index) const { return handled_.contains(index); }
    const QString& currentOutput() const { return currentOutput_; }
    qsizetype streamCount() const { return slots_.size(); }

private:
    struct Slot {
        std::uint32_t index = 0;
        QString appId;
        int channels = 2;
    };

    VolumeWriter writer_;
    QList<Slot> slots_;
    QSet<std::uint32_t> handled_;
    QString currentOutput_;
};

} // namespace tallowmere
