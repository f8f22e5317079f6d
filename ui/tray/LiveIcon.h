#pragma once

#include "ui/tray/StripFigures.h"

#include <QImage>
#include <QList>

namespace tallowmere {

// The square tray icon: the CPU sparkline over the memory sparkline, each in its own half, on
// a dark rounded tile that reads on light and dark panels alike.
class LiveIcon {
public:
    // The sizes panels ask for, plain and double density.
    static const QList<int>& sizes();

    // One square image of `pixels` x `pixels`, ARGB32.
    static QImage render(const StripFigures& figures, int pixels);
};

} // namespace tallowmere
