#include "ui/window/WindowFrame.h"

#include <QStringList>

#include <algorithm>

namespace tallowmere::windowFrame {

std::optional<QRect> parse(const QString& text)
{
    const QStringList parts = text.split(u' ', Qt::SkipEmptyParts);
    if (parts.size() != 4)
        return std::nullopt;
    int values[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = parts[i].toInt(&ok);
        if (!ok)
            return std::nullopt;
    }
    return QRect(values[0], values[1], values[2], values[3]);
}

QString format(const QRect& frame)
{
    return QStringLiteral("%1 %2 %3 %4").arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height());
}

QRect restore(const std::optional<QRect>& saved, const QList<QRect>& screens, const QRect& primary)
{
    const auto centred = [&primary](QSize size) {
        QRect frame(QPoint(0, 0), size);
        frame.moveCenter(primary.center());
        return frame;
    };
    if (!saved || saved->width() < minimumSize.width() || saved->height() < minimumSize.height())
        return centred(defaultSize);
    // Enough of the window must show on some screen to grab it by its top.
    const bool reachable = std::any_of(screens.begin(), screens.end(), [&saved](const QRect& screen) {
        const QRect overlap = screen.intersected(*saved);
        return overlap.width() >= 100 && overlap.height() >= 50;
    });
    return reachable ? *saved : centred(saved->size());
}

} // namespace tallowmere::windowFrame
