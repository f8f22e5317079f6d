#pragma once

#include "power/KeepAwakeStatus.h"

#include <QList>
#include <QString>

#include <optional>

namespace tallowmere {

struct BatteryInfo;

// The popover's formatted figures, kept apart from the widgets so they can be checked without
// a screen. Numbers are formatted in the C locale.

// "38%" ("%.0f%%").
QString percentHeadline(double percent);
// "User 12% · System 5%".
QString cpuDetail(double user, double system);
// "5.2 GB used · 10.4 GB free".
QString usedFreeDetail(double usedGB, double freeGB);
// "Peak 1.5 KB/s": the largest rate among the samples shown, download and upload alike.
QString networkPeak(const QList<double>& download, const QList<double>& upload);
// "Session 1.2 GB / 80 MB".
QString networkSession(quint64 download, quint64 upload);

// "45m" under an hour, "1:05" from an hour.
QString durationText(int minutes);
// "Charging · Full in 45m · 500 cycles · Normal" and its other forms.
QString batteryStatusLine(const BatteryInfo& battery);
// The level icon for a charge: "battery.100percent.bolt" while charging, else the level icon.
QString batteryIconName(const BatteryInfo& battery);
// The nearest of "battery.25percent" ... "battery.100percent" in quarters (an empty battery
// shows the lowest).
QString batteryLevelIconName(int percent);

// "7:30 AM" for a wake time given in 24-hour form, and its parts "7:30" and "AM".
QString wakeTimeText(int hour, int minute);
QString wakeClockText(int hour, int minute);
QString meridiemText(int hour);

// "40%" for a slider value of 0.4.
QString volumeText(double value);

// Titles and icons of the keep-awake choices.
QString modeTitle(KeepAwakeMode mode);
QString modeIcon(KeepAwakeMode mode);
QString durationChipTitle(KeepAwakeDuration duration);

} // namespace tallowmere
