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

} // namespace linuxTexts

} // namespace tallowmere
