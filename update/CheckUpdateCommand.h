#pragma once

#include "update/UpdateEnvironment.h"

class QTextStream;

namespace tallowmere {

// Exit codes of `tallowmere --check-update`, in the manner of package managers' check commands.
namespace checkUpdateExit {
inline constexpr int upToDate = 0;
inline constexpr int failed = 1;
inline constexpr int available = 100;
}

// Runs one user-initiated check on the event loop (a QCoreApplication must exist), writes its
// outcome to `out` and returns one of the exit codes above.
int runCheckUpdateCommand(QTextStream& out);
int runCheckUpdateCommand(QTextStream& out, UpdateEnvironment environment);

} // namespace tallowmere
