#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>
#include <QStringList>

namespace tallowmere {

// The program's icons by symbol name ("cpu", "memorychip", "chevron.left", ...). Each symbol
// has a Freedesktop icon-theme name and a monochrome SVG of our own, so every icon shows on a
// machine without an icon theme.
class Icons {
public:
    // The Freedesktop name the symbol maps to; empty for an unknown symbol.
    static QString themeName(const QString& symbol);
    // Whether our own SVG exists for the symbol.
    static bool hasBundled(const QString& symbol);
    // Every symbol of the table.
    static QStringList symbols();

    // The desktop theme's icon when the theme has one, else ours.
    static QIcon icon(const QString& symbol);
    // Our own icon painted in one colour, `size` logical pixels square at `devicePixelRatio`.
    // Unknown symbols give a null pixmap.
    static QPixmap tinted(const QString& symbol, const QColor& color, int size, qreal devicePixelRatio = 1.0);
    // Our own icon as a QIcon in one colour (for buttons and list rows).
    static QIcon tintedIcon(const QString& symbol, const QColor& color, int size = 16);
};

} // namespace tallowmere
