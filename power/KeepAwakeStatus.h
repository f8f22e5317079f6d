#pragma once

#include <QDateTime>
#include <QLatin1StringView>
#include <QString>

#include <chrono>
#include <optional>

namespace tallowmere {

// Wall-clock instants, finer than milliseconds so that a session read right after it started
// already shows time gone by.
using WallTime = std::chrono::system_clock::time_point;

QDateTime toDateTime(WallTime time);

// How long one keep-awake session lasts; persisted by its raw name.
enum class KeepAwakeDuration { tenMinutes, thirtyMinutes, oneHour, infinite };

// What is held while keep-awake is on; persisted by its raw name.
enum class KeepAwakeMode { displayOn, displayOff, lidClosed };

QLatin1StringView rawName(KeepAwakeDuration duration);
QLatin1StringView rawName(KeepAwakeMode mode);

// The session length, or nothing for a session without end.
std::optional<std::chrono::seconds> periodOf(KeepAwakeDuration duration);

// "1h 05m", "29m", "45s" from a number of seconds (fractions are cut off).
QString countdownText(double seconds);

// The line under the keep-awake switch; nothing while inactive.
std::optional<QString> keepAwakeStatusText(bool active, const std::optional<WallTime>& expiresAt, WallTime now);

} // namespace tallowmere
