#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace tallowmere {

// Runs a program with arguments to its end and gives its exit status (-1 when it could not be
// started). The wake schedule and "sleep now" go through it, so tests can record the calls.
using CommandRunner = std::function<int(const QString& program, const QStringList& arguments)>;

// The default runner: a real child process, no shell, no elevation.
CommandRunner childProcessRunner();

// The daily wake as the user's service manager keeps it: a timer that wakes the machine at
// hh:mm every day, and the do-nothing service it triggers.
inline constexpr QLatin1StringView wakeTimerName("tallowmere-wake.timer");
inline constexpr QLatin1StringView wakeServiceName("tallowmere-wake.service");

QByteArray wakeTimerUnit(int hour, int minute);
QByteArray wakeServiceUnit();

// $XDG_CONFIG_HOME/systemd/user, where the user's service manager looks for units.
QString defaultUserUnitDirectory();

// Brings the units in `unitDirectory` and the service manager in line with the schedule:
// writes the units and starts the timer, or stops it and removes them. Exit statuses are not
// acted upon; a unit file that cannot be written is said once in the log.
void applyWakeSchedule(const QString& unitDirectory, bool enabled, int hour, int minute, const CommandRunner& run);

} // namespace tallowmere
