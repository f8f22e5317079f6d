#include "app/PictureCommand.h"

#include "app/AppServices.h"
#include "app/PictureTraffic.h"
#include "app/WindowSeam.h"
#include "core/Log.h"
#include "history/NetworkMonitoringService.h"
#include "ui/components/Theme.h"
#include "ui/popover/MenuBarStatsPopover.h"
#include "ui/tray/LiveIcon.h"
#include "ui/tray/StripRenderer.h"
#include "ui/window/WindowPictures.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QScrollArea>
#include <QTemporaryDir>

namespace tallowmere {

namespace {

// How long the monitors sample before the pictures are taken: enough for a few history points.
constexpr std::chrono::milliseconds kSampling{3000};

bool save(const QImage& image, const QDir& dir, const QString& name)
{
    const QString path = dir.filePath(name);
    const bool ok = image.save(path);
    logInfo(ok ? QStringLiteral("wrote %1").arg(path) : QStringLiteral("could not write %1").arg(path));
    return ok;
}

// The icon at every size, on a dark and a light panel, as a panel would show it.
QImage iconSheet(const StripFigures& figures)
{
    const QList<int>& sizes = LiveIcon::sizes();
    int width = 16;
    for (int s : sizes)
        width += s + 16;
    QImage sheet(width, 2 * (96 + 24), QImage::Format_ARGB32_Premultiplied);
    QPainter p(&sheet);
    const QColor panels[] = {QColor(0x1a, 0x1a, 0x1a), QColor(0xe8, 0xe8, 0xea)};
    for (int row = 0; row < 2; ++row) {
        const QRect band(0, row * 120, width, 120);
        p.fillRect(band, panels[row]);
        int x = 16;
        for (int s : sizes) {
            p.drawImage(QPoint(x, band.center().y() - s / 2), LiveIcon::render(figures, s));
            x += s + 16;
        }
    }
    return sheet;
}

// The strip on a dark panel, as the head of the dashboard draws it, at double density.
QImage stripOnPanel(const StripFigures& figures)
{
    const QSizeF size = StripRenderer::size(figures);
    const qreal dpr = 3;
    QImage image(QSize(int((size.width() + 24) * dpr), int((size.height() + 12) * dpr)), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(dpr);
    image.fill(QColor(0x1a, 0x1a, 0x1a));
    QPainter p(&image);
    StripRenderer::paint(p, QPointF(12, 6), figures, Qt::white);
    return image;
}

// The dashboard as it opens, and its whole scrolling content.
bool savePopover(AppServices& services, const QDir& dir)
{
    MenuBarStatsPopover popover(services.trayServices());
    popover.show();
    QApplication::processEvents();
    bool ok = save(popover.grab().toImage(), dir, QStringLiteral("popover.png"));
    if (auto* scroll = popover.findChild<QScrollArea*>()) {
        QWidget* content = scroll->widget();
        content->resize(content->width(), content->sizeHint().height());
        ok = save(content->grab().toImage(), dir, QStringLiteral("popover-full.png")) && ok;
    }
    popover.hide();
    return ok;
}

} // namespace

int runPictureCommand(const QString& directory)
{
    QDir dir(directory);
    if (!dir.mkpath(QStringLiteral("."))) {
        logWarning(QStringLiteral("cannot create %1").arg(directory));
        return 1;
    }
    AppServices& services = AppServices::shared();
    services.applyMenuBarEnabled(true);

    // The usage history of the pictures is a made-up week in a database of its own, never the
    // user's; the Network page reads it through a network service of its own.
    QTemporaryDir historyDir;
    auto store = std::make_unique<NetworkUsageStore>(historyDir.path());
    // Written by the store's worker while the monitors sample; queries queue behind the writes.
    recordPictureWeek(*store, systemNow());
    NetworkMonitoringService pictureNetwork(std::move(store));
    WindowServices windowServices = makeWindowServices(services);
    windowServices.network = &pictureNetwork;

    // The live pages sample together with the strip's monitors; the light pages reuse what they gathered.
    QList<std::pair<QString, QImage>> pages = renderWindowPages(windowServices, Theme::darkTheme(), {}, kSampling);
    pages += renderWindowPages(windowServices, Theme::lightTheme(), QStringLiteral("light"));

    const StripFigures figures = StripFigures::read(services.cpuService(), services.memoryService(),
                                                    services.networkService(), services.batteryService());
    bool ok = true;
    for (int size : LiveIcon::sizes())
        ok = save(LiveIcon::render(figures, size), dir, QStringLiteral("tray-icon-%1.png").arg(size)) && ok;
    ok = save(iconSheet(figures), dir, QStringLiteral("tray-icons.png")) && ok;
    ok = save(StripRenderer::render(figures, 2, Qt::white), dir, QStringLiteral("strip.png")) && ok;
    ok = save(stripOnPanel(figures), dir, QStringLiteral("strip-on-panel.png")) && ok;
    ok = savePopover(services, dir) && ok;
    for (const auto& [name, image] : pages)
        ok = save(image, dir, name) && ok;
    services.applyMenuBarEnabled(false);
    return ok ? 0 : 1;
}

} // namespace tallowmere
