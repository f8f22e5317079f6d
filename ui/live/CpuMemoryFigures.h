#pragma once

#include "monitors/CPUMonitor.h"
#include "monitors/MemoryMonitor.h"
#include "ui/live/ProcessTableModel.h"

#include <QList>
#include <QString>

namespace tallowmere {

// What the live CPU and memory cards show, formatted: the cards only place these texts.

// "%.0f%%" for a headline figure, "%.1f%%" in rows; "%.1f GB".
QString headlinePercent(double percent);
QString rowPercent(double percent);
QString gigabytes(double value);

template <class Point>
QList<double> historyValues(const QList<Point>& history)
{
    QList<double> values;
    values.reserve(history.size());
    for (const Point& point : history)
        values.append(point.usage);
    return values;
}

// The CPU list: a row per process keyed by its pid, figures CPU share and memory. The most
// rows it keeps: enough for every process of a busy desktop, bounded all the same.
inline constexpr int kCpuListRowLimit = 1000;
ProcessTableLayout cpuProcessLayout();
QList<ProcessTableRow> cpuProcessRows(const QList<ProcessCPUUsage>& processes);

// The memory list: a row per program keyed by its name, figures memory and share, and the
// number of its processes beside the name; at most 50 rows.
inline constexpr int kMemoryListRowLimit = 50;
ProcessTableLayout memoryProcessLayout();
QList<ProcessTableRow> memoryProcessRows(const QList<ProcessMemoryUsage>& programs);

// The memory list's stand-in text: before any result has come, and once one came empty.
QString memoryListEmptyText(bool resultSeen);

} // namespace tallowmere
