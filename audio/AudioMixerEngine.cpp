#include "audio/AudioMixerEngine.h"

#include <QHash>

#include <algorithm>

namespace tallowmere {

void AudioMixerEngine::update(const QList<AudioPlayingApp>& apps, const PulseSnapshot& snapshot, const GainSource& gain)
{
    QSet<std::uint32_t> wanted;
    for (const AudioPlayingApp& app : apps)
        for (std::uint32_t index : app.objectIDs)
            wanted.insert(index);
    const bool outputChanged = !snapshot.defaultSink.isEmpty() && snapshot.defaultSink != currentOutput_;
    if (wanted == handled_ && (!outputChanged || apps.isEmpty()))
        return;
    currentOutput_ = snapshot.defaultSink;

    QHash<std::uint32_t, int> channels;
    for (const PlaybackStream& stream : snapshot.playback)
        channels.insert(stream.index, stream.channels);

    QList<Slot> table;
    QSet<std::uint32_t> handled;
    for (const AudioPlayingApp& app : apps) {
        const std::optional<float> appGain = gain(app.id);
        for (std::uint32_t index : app.objectIDs) {
            if (table.size() == maxStreams)
                break;
            const Slot slot{index, app.id, channels.value(index, 2)};
            // Streams already handled keep whatever volume they have now, ours or the user's.
            if (appGain && (outputChanged || !handled_.contains(index)))
                writer_(slot.index, slot.channels, *appGain);
            table.append(slot);
            handled.insert(index);
        }
    }
    slots_ = std::move(table);
    handled_ = std::move(handled);
}

void AudioMixerEngine::setGain(const QString& id, float gain)
{
    const float clamped = gain > 0.0f ? std::min(gain, 1.0f) : 0.0f;
    for (const Slot& slot : slots_) {
        if (slot.appId == id)
            writer_(slot.index, slot.channels, clamped);
    }
}

} // namespace tallowmere
