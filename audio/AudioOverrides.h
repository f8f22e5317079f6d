#pragma once

#include "core/PreferencesStore.h"

#include <QString>

#include <optional>

namespace tallowmere {

// The per-application volumes and mute switches the user chose, kept in the preferences.
// Entries are never removed; an entry of the wrong kind counts as missing.
class AudioOverrides {
public:
    explicit AudioOverrides(PreferencesStore& store) : store_(store) {}

    std::optional<double> volume(const QString& id) const;
    std::optional<bool> muted(const QString& id) const;

    // Stores percent clamped to 0...100 and returns what was stored.
    double setVolume(const QString& id, double percent);
    void setMuted(const QString& id, bool muted);

    // The linear gain a newly seen stream of `id` gets: 0 when muted, else the stored volume
    // (100 without one). Absent when the user never chose either, so the stream keeps the
    // volume the sound server gave it.
    std::optional<float> gain(const QString& id) const;

    static double clampPercent(double percent);

private:
    QJsonValue entry(QLatin1StringView key, const QString& id) const;
    void setEntry(QLatin1StringView key, const QString& id, const QJsonValue& value);

    PreferencesStore& store_;
};

} // namespace tallowmere
