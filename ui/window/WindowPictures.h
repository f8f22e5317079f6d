#pragma once

#include "ui/window/WindowServices.h"

#include <QImage>
#include <QList>
#include <QString>

#include <chrono>
#include <utility>

namespace tallowmere {

struct Theme;

// Every page of the main window drawn at the window's default size, named
// "window-<page>.png" ("window-summary.png", "window-settings.png"), in `theme`. The names of
// pictures drawn in the other appearance carry its name ("window-summary-light.png").
// The pages with live cards are open together, each in a window of its own, for `sampling`
// before they are drawn, so their monitors gather some history at the same time. The Network
// page is also drawn whole ("window-network-full.png") with its usage history over the week.
QList<std::pair<QString, QImage>> renderWindowPages(WindowServices services, const Theme& theme, const QString& suffix = {},
                                                    std::chrono::milliseconds sampling = {});

} // namespace tallowmere
