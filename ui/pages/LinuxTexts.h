#pragma once

#include <QString>

#include <optional>

namespace tallowmere {

// The few places where a fixed text of the program would state something false on Linux, and
// the Linux facts the pages show in their place.
namespace linuxTexts {

// The file-system type mounted at "/" ("ext4", "btrfs"), from <procRoot>/self/mountinfo.
std::optional<QString> rootFileSystemType(const QString& procRoot = QStringLiteral("/proc"));
// Whole seconds since boot, from <procRoot>/uptime.
std::optional<qint64> uptimeSeconds(const QString& procRoot = QStringLiteral("/proc"));

// Under the battery health figures: why they may differ from the system's own.
QString batteryHealthNote();
// Under "On AC power — no battery detected".
QString noInternalBatteryNote();

} // namespace linuxTexts

} // namespace tallowmere
