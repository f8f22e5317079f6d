#pragma once

#include "ui/window/WindowServices.h"

#include <QImage>
#include <QList>
#include <QString>

#include <utility>

namespace tallowmere {

struct Theme;

// Every page of the main window drawn at the window's default size, named
// "window-<page>.png" ("window-summary.png", "window-settings.png"), in `theme`. The names of
// pictures drawn in the other appearance carry its name ("window-summary-light.png").
QList<std::pair<QString, QImage>> renderWindowPages(WindowServices services, const Theme& theme, const QString& suffix = {});

} // namespace tallowmere
