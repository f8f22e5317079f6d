#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tallowmere {

// Whether an archive entry named `name` unpacks inside the folder it is unpacked into: a
// relative path without ".." components (nor backslashes, which some tools turn into them).
bool isContainedEntryName(QStringView name);

// The first of `names` that would leave the unpacking folder, if any.
std::optional<QString> firstEscapingEntry(const QStringList& names);

// The first symbolic link below `folder` that points outside it, if any. Links are read, never
// followed, while walking.
std::optional<QString> firstEscapingLink(const QString& folder);

} // namespace tallowmere
