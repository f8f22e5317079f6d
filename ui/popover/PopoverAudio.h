#pragma once

#include <QList>
#include <QMetaObject>
#include <QString>

#include <functional>

class QObject;

namespace tallowmere {

// One application in the mixer as the popover shows it.
struct AudioRowData {
    QString id;
    QString name;
    QString subtitle;
    double volume = 100;  // percent
    bool isMuted = false;

    bool operator==(const AudioRowData&) const = default;
};

// What the mixer section needs from the per-application volume service, as plain calls, so
// the section stays free of the sound server's types. The composition root fills it from the
// service.
struct PopoverAudio {
    std::function<QList<AudioRowData>()> sessions;
    std::function<void()> start;
    std::function<void()> stop;
    std::function<void(const QString& id, double percent)> setVolume;
    std::function<void(const QString& id)> toggleMute;
    // Calls `changed` in `context` whenever the session list changes.
    std::function<QMetaObject::Connection(QObject* context, std::function<void()> changed)> watch;
};

} // namespace tallowmere
