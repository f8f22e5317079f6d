#pragma once

#include <QString>

#include <optional>

namespace tallowmere {

// A folder for the update's downloads, unpacking and install script that no other user can
// read or change: `runtimeDirectory`/Tallowmere (normally $XDG_RUNTIME_DIR, which the login
// manager makes private) when it can be made or is already ours and private, else a fresh
// 0700 folder made with mkdtemp() in `fallbackParent`. Nothing when neither can be made.
std::optional<QString> makePrivateFolder(const QString& runtimeDirectory, const QString& fallbackParent);

} // namespace tallowmere
