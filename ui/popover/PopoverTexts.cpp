#include "ui/popover/PopoverTexts.h"

#include "monitors/NetworkFormat.h"
#include "power/BatteryInfo.h"
#include "ui/tray/StripFigures.h"

#include <algorithm>
#include <cmath>

namespace tallowmere {

namespace {
const QString kDot = QStringLiteral(" \u00B7 ");

int twelveHour(int hour)
{
    const int h = hour % 12;
    return h == 0 ? 12 : h;
}
} // namespace

QString percentHeadline(double percent)
{
    return QString::asprintf("%.0f%%", percent);
}

QString cpuDetail(double user, double system)
{
    return QString::asprintf("User %.0f%%", user) + kDot + QString::asprintf("System %.0f%%", system);
}

QString usedFreeDetail(double usedGB, double freeGB)
{
    return QString::asprintf("%.1f GB used", usedGB) + kDot + QString::asprintf("%.1f GB free", freeGB);
}

QString networkPeak(const QList<double>& download, const QList<double>& upload)
{
    double peak = 0;
    for (const QList<double>* series : {&download, &upload})
        for (double v : *series)
            peak = std::max(peak, v);
    return QStringLiteral("Peak ") + formatBytes(peak) + QStringLiteral("/s");
}

QString networkSession(quint64 download, quint64 upload)
{
    return QStringLiteral("Session ") + formatBytes(double(download)) + QStringLiteral(" / ")
        + formatBytes(double(upload));
}

QString durationText(int minutes)
{
    if (minutes < 60)
        return QString::number(minutes) + QLatin1Char('m');
    return QString::asprintf("%d:%02d", minutes / 60, minutes % 60);
}

QString batteryStatusLine(const BatteryInfo& b)
{
    QString state;
    if (b.isCharging.value_or(false)) {
        state = QStringLiteral("Charging");
        if (b.timeToFullChargeMinutes && *b.timeToFullChargeMinutes >= 1)
            state += QStringLiteral(" \u00B7 Full in ") + durationText(*b.timeToFullChargeMinutes);
    } else if (b.isFullyCharged.value_or(false)) {
        state = QStringLiteral("Fully Charged");
    } else if (const std::optional<QString> time = stripBatteryTime(b)) {
        state = *time + QStringLiteral(" remaining");
    } else {
        state = b.powerSource.value_or(QStringLiteral("On Battery"));
    }
    QStringList parts{state};
    if (b.cycleCount)
        parts << QString::number(*b.cycleCount) + QStringLiteral(" cycles");
    parts << b.healthStatus();
    return parts.join(kDot);
}

QString batteryIconName(const BatteryInfo& battery)
{
    if (battery.isCharging.value_or(false))
        return QStringLiteral("battery.100percent.bolt");
    return batteryLevelIconName(battery.percentage.value_or(0));
}

QString batteryLevelIconName(int percent)
{
    const int step = std::max(25, int(std::lround(std::clamp(percent, 0, 100) / 25.0)) * 25);
    return QStringLiteral("battery.%1percent").arg(step);
}

QString wakeClockText(int hour, int minute)
{
    return QString::asprintf("%d:%02d", twelveHour(hour), minute);
}

QString meridiemText(int hour)
{
    return hour < 12 ? QStringLiteral("AM") : QStringLiteral("PM");
}

QString wakeTimeText(int hour, int minute)
{
    return wakeClockText(hour, minute) + QLatin1Char(' ') + meridiemText(hour);
}

QString volumeText(double value)
{
    return QString::asprintf("%.0f%%", value * 100);
}

QString modeTitle(KeepAwakeMode mode)
{
    switch (mode) {
    case KeepAwakeMode::displayOn: return QStringLiteral("Keep display on");
    case KeepAwakeMode::displayOff: return QStringLiteral("Keep display off");
    case KeepAwakeMode::lidClosed: return QStringLiteral("Lid closed");
    }
    return {};
}

QString modeIcon(KeepAwakeMode mode)
{
    switch (mode) {
    case KeepAwakeMode::displayOn: return QStringLiteral("sun.max.fill");
    case KeepAwakeMode::displayOff: return QStringLiteral("moon.fill");
    case KeepAwakeMode::lidClosed: return QStringLiteral("laptopcomputer");
    }
    return {};
}

QString durationChipTitle(KeepAwakeDuration duration)
{
    switch (duration) {
    case KeepAwakeDuration::tenMinutes: return QStringLiteral("10m");
    case KeepAwakeDuration::thirtyMinutes: return QStringLiteral("30m");
    case KeepAwakeDuration::oneHour: return QStringLiteral("1h");
    case KeepAwakeDuration::infinite: return QStringLiteral("\u221E");
    }
    return {};
}

} // namespace tallowmere
