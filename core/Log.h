#pragma once

#include <QString>

namespace tallowmere {

// Lines for the journal and stderr, all with the program's prefix.
void logInfo(const QString& message);
void logWarning(const QString& message);

} // namespace tallowmere
