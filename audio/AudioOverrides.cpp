#include "audio/AudioOverrides.h"

#include "core/PreferenceKeys.h"

#include <QJsonObject>

#include <algorithm>

namespace tallowmere {

QJsonValue AudioOverrides::entry(QLatin1StringView key, const QString& id) const
{
    const TypedRead<QJsonObject> object = store_.readObject(key);
    return object.found() ? object.value.value(id) : QJsonValue();
}

void AudioOverrides::setEntry(QLatin1StringView key, const QString& id, const QJsonValue& value)
{
    // The whole dictionary is written back, other entries (of any kind) as they were.
    QJsonObject object = store_.readObject(key).valueOr({});
    object.insert(id, value);
    store_.setValue(key, object);
}

std::optional<double> AudioOverrides::volume(const QString& id) const
{
    const QJsonValue value = entry(keys::audioVolumeOverrides, id);
    return value.isDouble() ? std::optional(clampPercent(value.toDouble())) : std::nullopt;
}

std::optional<bool> AudioOverrides::muted(const QString& id) const
{
    const QJsonValue value = entry(keys::audioMuteOverrides, id);
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

double AudioOverrides::setVolume(const QString& id, double percent)
{
    const double clamped = clampPercent(percent);
    setEntry(keys::audioVolumeOverrides, id, clamped);
    return clamped;
}

void AudioOverrides::setMuted(const QString& id, bool muted)
{
    setEntry(keys::audioMuteOverrides, id, muted);
}

std::optional<float> AudioOverrides::gain(const QString& id) const
{
    const std::optional<double> stored = volume(id);
    const std::optional<bool> mute = muted(id);
    if (!stored && !mute)
        return std::nullopt;
    if (mute.value_or(false))
        return 0.0f;
    return static_cast<float>(stored.value_or(100.0) / 100.0);
}

double AudioOverrides::clampPercent(double percent)
{
    if (!(percent > 0.0)) // NaN too
        return 0.0;
    return std::min(percent, 100.0);
}

} // namespace tallowmere
