#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace tallowmere {

class BatteryMonitoringService;
class CPUMonitoringService;
class MemoryMonitoringService;
class NetworkMonitoringService;
struct BatteryInfo;

// Everything the tray strip shows, read from the services at one moment. The strip drawing,
// the tray icon, its text label and its tooltip are all made from one of these.
struct StripFigures {
    double cpu = 0;                 // percent
    QList<double> cpuHistory;       // percent, oldest first
    double memory = 0;
    QList<double> memoryHistory;
    double download = 0;            // bytes per second
    double upload = 0;
    std::optional<QString> batteryTime;  // "2:05"; absent without a battery or an estimate

    bool operator==(const StripFigures&) const = default;

    static StripFigures read(const CPUMonitoringService& cpu, const MemoryMonitoringService& memory,
                             NetworkMonitoringService& network, const BatteryMonitoringService& battery);
};

// The battery part of the strip: time to full while charging, else time to empty, as "h:mm";
// absent without a battery or when the estimate is below a minute.
std::optional<QString> stripBatteryTime(const BatteryInfo& battery);

// A percentage as a whole number, rounded half away from zero: 37.5 gives "38".
QString wholePercent(double value);

// "↓ 1.5K" and "↑ 20K".
QString downloadText(double rate);
QString uploadText(double rate);

// The strip as one line of text for panels that show a label beside the icon:
// "C 38  M 62  ↓ 1.5K ↑ 20K  B 2:05".
QString stripLabel(const StripFigures& figures);
// The widest text the label can take with the same parts, so the panel reserves its room once.
QString stripLabelGuide(const StripFigures& figures);
// Every figure of the strip spelled out, one per line.
QString stripToolTip(const StripFigures& figures);

} // namespace tallowmere
