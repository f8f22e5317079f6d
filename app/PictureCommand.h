#pragma once

#include <QString>

namespace tallowmere {

class AppServices;

// Draws the tray icon at its sizes, the strip, the dashboard and every page of the main window
// with this machine's figures into PNG files in `directory`, without a display. Runs inside a
// QApplication on the offscreen platform. Returns the exit status and reports each file on stderr.
int runPictureCommand(const QString& directory);

} // namespace tallowmere
