#include "ui/components/Icons.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QSvgRenderer>

#include <array>
#include <utility>

namespace tallowmere {

namespace {

struct IconEntry {
    const char* symbol;
    const char* themeName;
};

// Symbol name -> Freedesktop icon name. The bundled SVG of a symbol lives at
// :/icons/<symbol>.svg.
constexpr std::array iconTable{
    IconEntry{"square.grid.2x2", "view-grid"},
    IconEntry{"desktopcomputer", "computer"},
    IconEntry{"laptopcomputer", "computer-laptop"},
    IconEntry{"cpu", "cpu"},
    IconEntry{"memorychip", "media-memory"},
    IconEntry{"battery.100percent", "battery-full"},
    IconEntry{"battery.75percent", "battery-good"},
    IconEntry{"battery.50percent", "battery-medium"},
    IconEntry{"battery.25percent", "battery-low"},
    IconEntry{"battery.100percent.bolt", "battery-full-charging"},
    IconEntry{"rectangle.connected.to.line.below", "computer"},
    IconEntry{"display", "video-display"},
    IconEntry{"display.trianglebadge.exclamationmark", "video-display"},
    IconEntry{"internaldrive", "drive-harddisk"},
    IconEntry{"externaldrive", "drive-removable-media"},
    IconEntry{"externaldrive.badge.xmark", "drive-removable-media"},
    IconEntry{"opticaldisc", "drive-optical"},
    IconEntry{"speaker.wave.2", "audio-volume-high"},
    IconEntry{"speaker.wave.2.fill", "audio-volume-high"},
    IconEntry{"speaker.slash", "audio-volume-muted"},
    IconEntry{"speaker.slash.fill", "audio-volume-muted"},
    IconEntry{"camera", "camera-photo"},
    IconEntry{"web.camera", "camera-web"},
    IconEntry{"video.slash", "camera-disabled"},
    IconEntry{"cable.connector", "drive-removable-media-usb"},
    IconEntry{"network", "network-wired"},
    IconEntry{"wifi.slash", "network-wireless-offline"},
    IconEntry{"gearshape", "preferences-system"},
    IconEntry{"chevron.left", "go-previous"},
    IconEntry{"chevron.right", "go-next"},
    IconEntry{"chevron.up", "go-up"},
    IconEntry{"chevron.down", "go-down"},
    IconEntry{"arrow.clockwise", "view-refresh"},
    IconEntry{"arrow.down", "go-down"},
    IconEntry{"arrow.up", "go-up"},
    IconEntry{"arrow.down.circle", "software-update-available"},
    IconEntry{"eye", "view-visible"},
    IconEntry{"eye.slash", "view-hidden"},
    IconEntry{"chart.pie", "office-chart-pie"},
    IconEntry{"chart.line.uptrend.xyaxis", "office-chart-line"},
    IconEntry{"clock.arrow.circlepath", "document-open-recent"},
    IconEntry{"arrow.turn.down.right", "format-indent-more"},
    IconEntry{"list.bullet.rectangle", "view-list-details"},
    IconEntry{"menubar.rectangle", "preferences-desktop"},
    IconEntry{"antenna.radiowaves.left.and.right", "network-transmit-receive"},
    IconEntry{"sparkles", "starred"},
    IconEntry{"info.circle", "dialog-information"},
    IconEntry{"doc.on.doc", "edit-copy"},
    IconEntry{"checkmark.circle.fill", "emblem-ok"},
    IconEntry{"checkmark.seal.fill", "emblem-default"},
    IconEntry{"exclamationmark.triangle", "dialog-warning"},
    IconEntry{"bolt.fill", "battery-full-charging"},
    IconEntry{"moon.fill", "weather-clear-night"},
    IconEntry{"sun.max.fill", "weather-clear"},
    IconEntry{"sunrise.fill", "daytime-sunrise"},
    IconEntry{"power", "system-shutdown"},
    IconEntry{"xmark", "window-close"},
};

const IconEntry* find(const QString& symbol)
{
    for (const IconEntry& entry : iconTable)
        if (symbol == QLatin1String(entry.symbol))
            return &entry;
    return nullptr;
}

QString bundledPath(const QString& symbol)
{
    return QStringLiteral(":/icons/%1.svg").arg(symbol);
}

} // namespace

QString Icons::themeName(const QString& symbol)
{
    const IconEntry* entry = find(symbol);
    return entry ? QString::fromLatin1(entry->themeName) : QString();
}

bool Icons::hasBundled(const QString& symbol)
{
    return QFile::exists(bundledPath(symbol));
}

QStringList Icons::symbols()
{
    QStringList list;
    for (const IconEntry& entry : iconTable)
        list << QString::fromLatin1(entry.symbol);
    return list;
}

QIcon Icons::icon(const QString& symbol)
{
    const QString name = themeName(symbol);
    if (!name.isEmpty() && QIcon::hasThemeIcon(name))
        return QIcon::fromTheme(name);
    return hasBundled(symbol) ? QIcon(bundledPath(symbol)) : QIcon();
}

QPixmap Icons::tinted(const QString& symbol, const QColor& color, int size, qreal devicePixelRatio)
{
    // Pages repaint the same few icons often; render each colour and size once.
    static QHash<QString, QPixmap> cache;
    const QString key = QStringLiteral("%1|%2|%3|%4").arg(symbol, color.name(QColor::HexArgb)).arg(size).arg(devicePixelRatio);
    if (const auto it = cache.constFind(key); it != cache.constEnd())
        return *it;

    QSvgRenderer renderer(bundledPath(symbol));
    if (!renderer.isValid())
        return {};
    const int device = qRound(size * devicePixelRatio);
    QPixmap pixmap(device, device);
    pixmap.fill(Qt::transparent);
    {
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF(0, 0, device, device));
        // The SVGs are drawn in black; keep their shape, take the colour.
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(pixmap.rect(), color);
    }
    pixmap.setDevicePixelRatio(devicePixelRatio);
    cache.insert(key, pixmap);
    return pixmap;
}

QIcon Icons::tintedIcon(const QString& symbol, const QColor& color, int size)
{
    QIcon result;
    for (qreal ratio : {1.0, 2.0})
        result.addPixmap(tinted(symbol, color, size, ratio));
    return result;
}

} // namespace tallowmere
