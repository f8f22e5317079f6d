#include "ui/tray/LiveIcon.h"

#include "ui/components/Sparkline.h"
#include "ui/components/Theme.h"

#include <QPainter>

#include <algorithm>

namespace tallowmere {

const QList<int>& LiveIcon::sizes()
{
    // 16, 22, 24, 32 and 48 and their doubles; 32 and 48 are both at once.
    static const QList<int> all{16, 22, 24, 32, 44, 48, 64, 96};
    return all;
}

QImage LiveIcon::render(const StripFigures& figures, int pixels)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    const Theme& theme = Theme::darkTheme();
    const qreal s = pixels;
    const qreal radius = s * 0.2;
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::withOpacity(theme.colors.window, 0.85));
    painter.drawRoundedRect(QRectF(0, 0, s, s), radius, radius);

    const qreal pad = std::max<qreal>(1.5, s * 0.12);
    const qreal line = std::max<qreal>(1.2, s / 14);
    const qreal half = (s - 2 * pad) / 2;
    // Each line keeps half its stroke inside its band so 0 and 100 stay visible.
    const QRectF top(pad, pad + line / 2, s - 2 * pad, half - line);
    const QRectF bottom(pad, pad + half + line / 2, s - 2 * pad, half - line);
    paintSparkline(painter, top, figures.cpuHistory, theme.colors.cpu, line, 10);
    paintSparkline(painter, bottom, figures.memoryHistory, theme.colors.memory, line, 10);
    return image;
}

} // namespace tallowmere
