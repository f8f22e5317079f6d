#pragma once

#include <QString>

namespace tallowmere {

class AppServices;

// Draws the tray icon at its sizes, the strip and the dashboard with live figures of this
// machine into PNG files in `directory`, without a display. Runs inside a QApplication on the
// offscreen platform. Returns the exit status and reports each file on stderr.
int runPictureCommand(const QString& directory);

} // namespace tallowmere
