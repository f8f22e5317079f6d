#include "ui/live/CpuMemoryFigures.h"

#include "monitors/NetworkFormat.h"

namespace tallowmere {

QString headlinePercent(double percent)
{
    return QString::number(percent, 'f', 0) + QLatin1Char('%');
}

QString rowPercent(double percent)
{
    return QString::number(percent, 'f', 1) + QLatin1Char('%');
}

QString gigabytes(double value)
{
    return QString::number(value, 'f', 1) + QStringLiteral(" GB");
}

ProcessTableLayout cpuProcessLayout()
{
    return {
        .figureHeaders = {QStringLiteral("CPU"), QStringLiteral("Memory")},
        .formats = {rowPercent, formatBytes},
        .sortColumnOf = {0, 1, 2},
        .rowLimit = kCpuListRowLimit,
    };
}

QList<ProcessTableRow> cpuProcessRows(const QList<ProcessCPUUsage>& processes)
{
    QList<ProcessTableRow> rows;
    rows.reserve(processes.size());
    for (const ProcessCPUUsage& p : processes) {
        const QString pid = QString::number(p.pid);
        rows.append({pid, p.name, QStringLiteral("PID ") + pid, {}, {p.cpuPercent, double(p.memoryBytes)}});
    }
    return rows;
}

ProcessTableLayout memoryProcessLayout()
{
    return {
        .figureHeaders = {QStringLiteral("Memory"), QStringLiteral("Share")},
        .formats = {formatBytes, rowPercent},
        // The share is proportional to the memory, so its header sorts like the memory one.
        .sortColumnOf = {0, 1, 1},
        .rowLimit = kMemoryListRowLimit,
    };
}

QList<ProcessTableRow> memoryProcessRows(const QList<ProcessMemoryUsage>& programs)
{
    QList<ProcessTableRow> rows;
    rows.reserve(programs.size());
    for (const ProcessMemoryUsage& p : programs)
        rows.append({p.id, p.name, {}, QString::number(p.processCount), {double(p.memoryBytes), p.percent}});
    return rows;
}

QString memoryListEmptyText(bool resultSeen)
{
    return resultSeen ? QStringLiteral("Collecting process data\u2026") : QStringLiteral("Reading process memory\u2026");
}

} // namespace tallowmere
