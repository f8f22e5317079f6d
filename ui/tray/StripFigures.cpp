#include "ui/tray/StripFigures.h"

#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "monitors/NetworkFormat.h"
#include "power/BatteryMonitoringService.h"

#include <cmath>

namespace tallowmere {

StripFigures StripFigures::read(const CPUMonitoringService& cpu, const MemoryMonitoringService& memory,
                                NetworkMonitoringService& network, const BatteryMonitoringService& battery)
{
    StripFigures f;
    const CPUMonitor& c = cpu.monitor();
    f.cpu = c.currentUsage();
    f.cpuHistory.reserve(c.history().size());
    for (const CPUHistoryPoint& p : c.history())
        f.cpuHistory.append(p.usage);
    const MemoryMonitor& m = memory.monitor();
    f.memory = m.usagePercent();
    f.memoryHistory.reserve(m.history().size());
    for (const MemoryHistoryPoint& p : m.history())
        f.memoryHistory.append(p.usage);
    f.download = network.monitor().downloadRate();
    f.upload = network.monitor().uploadRate();
    f.batteryTime = stripBatteryTime(battery.battery());
    return f;
}

std::optional<QString> stripBatteryTime(const BatteryInfo& battery)
{
    if (!battery.isPresent)
        return std::nullopt;
    return battery.menuBarTimeText();
}

QString wholePercent(double value)
{
    if (!std::isfinite(value))
        value = 0;
    return QString::asprintf("%lld", static_cast<long long>(std::llround(value)));
}

QString downloadText(double rate)
{
    return QStringLiteral("\u2193 ") + formatBytesCompact(rate);
}

QString uploadText(double rate)
{
    return QStringLiteral("\u2191 ") + formatBytesCompact(rate);
}

QString stripLabel(const StripFigures& f)
{
    QString text = QStringLiteral("C ") + wholePercent(f.cpu) + QStringLiteral("  M ") + wholePercent(f.memory)
        + QStringLiteral("  ") + downloadText(f.download) + QLatin1Char(' ') + uploadText(f.upload);
    if (f.batteryTime)
        text += QStringLiteral("  B ") + *f.batteryTime;
    return text;
}

QString stripLabelGuide(const StripFigures& f)
{
    // Three-digit percentages and five-character rates are the widest the formats produce.
    QString text = QStringLiteral("C 100  M 100  \u2193 1023K \u2191 1023K");
    if (f.batteryTime)
        text += QStringLiteral("  B 88:88");
    return text;
}

QString stripToolTip(const StripFigures& f)
{
    QString text = QStringLiteral("CPU ") + wholePercent(f.cpu) + QStringLiteral("%\nMemory ")
        + wholePercent(f.memory) + QStringLiteral("%\nDownload ") + formatBytes(f.download)
        + QStringLiteral("/s\nUpload ") + formatBytes(f.upload) + QStringLiteral("/s");
    if (f.batteryTime)
        text += QStringLiteral("\nBattery ") + *f.batteryTime;
    return text;
}

} // namespace tallowmere
