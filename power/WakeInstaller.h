#pragma once

#include <QString>

namespace tallowmere {

// The programs and places the daily wake goes through. Tests point every one of them at a
// stand-in; the real machine's come from ofRunningProgram().
struct WakeTools {
    QString pkexec = QStringLiteral("pkexec");
    QString helper;                 // tallowmere-wake-helper, run as root through pkexec
    QString systemctl = QStringLiteral("systemctl");
    QString user;                   // the login name the timer is named after
    QString systemUnitDirectory;    // read only: tells whether the wake is in place
    QString oldUserUnitDirectory;   // where earlier versions kept a user timer

    static WakeTools ofRunningProgram();
};

// What the system holds after an attempt: whether the wake timer is in place, and when the
// system does not mirror the schedule, a short sentence saying why.
struct WakeOutcome {
    bool installed = false;
    QString problem;

    bool operator==(const WakeOutcome&) const = default;
};

// Reads the installed units (no privilege needed) and compares them with the schedule.
WakeOutcome installedWake(const WakeTools& tools, bool enabled, int hour, int minute);

// Installs or removes the timer through pkexec and the helper unless the system already
// mirrors the schedule. Blocks while polkit asks for a password: call it off the main thread.
WakeOutcome applyWake(const WakeTools& tools, bool enabled, int hour, int minute);

// Stops and removes the user timer of earlier versions, which never woke the machine.
void removeOldUserTimer(const WakeTools& tools);

} // namespace tallowmere
