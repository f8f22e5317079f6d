#pragma once

#include <QColor>
#include <QFont>

namespace tallowmere {

// Everything the painted components need to look alike: colours for one appearance, corner
// radii, spacing and the few type sizes. The popover always uses the dark theme; the main window
// follows the desktop's light or dark preference.
struct Theme {
    struct Colors {
        QColor window;        // panel or page background
        QColor card;          // card and tile surface
        QColor cardHover;     // surface under the pointer
        QColor border;        // hairline around cards
        QColor text;          // primary text and strokes
        QColor secondaryText; // captions, detail lines
        QColor tertiaryText;  // hints, empty states
        QColor separator;     // dividers between sections
        QColor track;         // empty part of bars, sliders, switches
        QColor accent;        // controls that are on or selected
        QColor cpu;
        QColor memory;
        QColor disk;
        QColor network;
        QColor upload;
        QColor battery;
        QColor warning;
        QColor critical;
    };
    struct Radii {
        qreal card = 10;
        qreal control = 6;
        qreal chip = 8;
        qreal bar = 3;
    };
    struct Spacing {
        int tight = 4;
        int small = 6;
        int medium = 10;
        int large = 14;
        int section = 18;
    };

    bool dark = true;
    Colors colors;
    Radii radii;
    Spacing spacing;

    static const Theme& darkTheme();
    static const Theme& lightTheme();
    // The theme for pages: dark or light after the desktop's preference (the portal's
    // colour-scheme setting, else the palette's window lightness).
    static const Theme& desktopTheme();

    // The system UI font at a point size and weight.
    static QFont font(qreal pointSize, QFont::Weight weight = QFont::Normal);
    // A fixed-pitch font for compact rate columns.
    static QFont monoFont(qreal pointSize, QFont::Weight weight = QFont::Normal);

    // `color` with its alpha multiplied by `opacity` (0...1).
    static QColor withOpacity(QColor color, qreal opacity);
};

} // namespace tallowmere
