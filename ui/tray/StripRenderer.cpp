#include "ui/tray/StripRenderer.h"

#include "ui/components/Sparkline.h"
#include "ui/components/Theme.h"

#include <QFontDatabase>
#include <QPainter>

#include <cmath>
#include <cstring>

namespace tallowmere {

namespace {

constexpr qreal kPadding = 4;
constexpr qreal kGap = 11;
constexpr qreal kValueBox = 18;
constexpr qreal kItemSpacing = 4;
constexpr QSizeF kSparkline{26, 14};
constexpr qreal kRatesBox = 40;
constexpr qreal kBatteryBox = 30;
constexpr qreal kSeparatorHeight = 12;
constexpr qreal kStatItemWidth = kValueBox + kItemSpacing + 26;

// The strip's type is set in pixels so it keeps its proportions whatever the screen's dpi.
// Each face keeps its metrics beside it: measuring is most of a redraw's text cost.
struct StripType {
    QFont font;
    QFontMetricsF metrics;
};

StripType makeType(int pixels, QFont::Weight weight, bool fixedPitch = false)
{
    QFont f = QFontDatabase::systemFont(fixedPitch ? QFontDatabase::FixedFont : QFontDatabase::GeneralFont);
    f.setPixelSize(pixels);
    f.setWeight(weight);
    return {f, QFontMetricsF(f)};
}

const StripType& captionType()
{
    static const StripType t = makeType(9, QFont::Bold);
    return t;
}
const StripType& valueType()
{
    static const StripType t = makeType(11, QFont::DemiBold);
    return t;
}
const StripType& rateType()
{
    static const StripType t = makeType(9, QFont::Normal, true);
    return t;
}

// Text placed by its baseline at a computed x: the plain drawText path, without the layout
// work that alignment rectangles cost on every redraw.
void drawAligned(QPainter& p, const StripType& type, qreal left, qreal width, qreal baseline, const QString& text,
                 Qt::Alignment horizontal)
{
    const qreal advance = type.metrics.horizontalAdvance(text);
    const qreal x = horizontal == Qt::AlignRight ? left + width - advance : left + (width - advance) / 2;
    p.setFont(type.font);
    p.drawText(QPointF(x, baseline), text);
}

// A caption over a value, centred in a box of `width`: the caption's baseline at 9 and the
// value's at 20 of the strip's 22.
void paintCaptioned(QPainter& p, qreal x, qreal width, const QString& caption, const QString& value,
                    const QColor& primary, qreal valueOpacity)
{
    p.setPen(Theme::withOpacity(primary, 0.50));
    drawAligned(p, captionType(), x, width, 8.5, caption, Qt::AlignHCenter);
    p.setPen(Theme::withOpacity(primary, valueOpacity));
    drawAligned(p, valueType(), x, width, 19.5, value, Qt::AlignHCenter);
}

qreal paintStatItem(QPainter& p, qreal x, const QString& caption, double value, const QList<double>& history,
                    const QColor& primary)
{
    paintCaptioned(p, x, kValueBox, caption, wholePercent(value), primary, 1.0);
    const qreal sparkX = x + kValueBox + kItemSpacing;
    const QRectF frame(QPointF(sparkX, (StripRenderer::kHeight - kSparkline.height()) / 2), kSparkline);
    paintSparkline(p, frame, history, Theme::withOpacity(primary, 0.88), 1.4, 10);
    return x + kStatItemWidth;
}

qreal paintSeparator(QPainter& p, qreal x, const QColor& primary)
{
    p.fillRect(QRectF(x, (StripRenderer::kHeight - kSeparatorHeight) / 2, 1, kSeparatorHeight),
               Theme::withOpacity(primary, 0.22));
    return x + 1;
}

qreal paintRates(QPainter& p, qreal x, double download, double upload, const QColor& primary)
{
    p.setPen(Theme::withOpacity(primary, 0.62));
    // Two 10.5-pixel lines with one pixel between them fill the strip's height.
    drawAligned(p, rateType(), x, kRatesBox, 8.5, downloadText(download), Qt::AlignRight);
    drawAligned(p, rateType(), x, kRatesBox, 20, uploadText(upload), Qt::AlignRight);
    return x + kRatesBox;
}

} // namespace

QSizeF StripRenderer::size(const StripFigures& figures)
{
    qreal width = kPadding + kStatItemWidth + kGap + kStatItemWidth + kGap + 1 + kGap + kRatesBox;
    if (figures.batteryTime)
        width += kGap + 1 + kGap + kBatteryBox;
    return {width + kPadding, kHeight};
}

void StripRenderer::paint(QPainter& painter, QPointF origin, const StripFigures& figures, const QColor& color)
{
    painter.save();
    painter.translate(origin);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    // The whole strip is at 92 %; nothing in it overlaps, so that goes into the colour rather
    // than the painter's opacity, which would take the raster engine off its fast paths.
    const QColor primary = Theme::withOpacity(color, 0.92);
    qreal x = kPadding;
    x = paintStatItem(painter, x, QStringLiteral("C"), figures.cpu, figures.cpuHistory, primary) + kGap;
    x = paintStatItem(painter, x, QStringLiteral("M"), figures.memory, figures.memoryHistory, primary) + kGap;
    x = paintSeparator(painter, x, primary) + kGap;
    x = paintRates(painter, x, figures.download, figures.upload, primary);
    if (figures.batteryTime) {
        x = paintSeparator(painter, x + kGap, primary) + kGap;
        paintCaptioned(painter, x, kBatteryBox, QStringLiteral("B"), *figures.batteryTime, primary, 0.72);
    }
    painter.restore();
}

QImage StripRenderer::render(const StripFigures& figures, qreal devicePixelRatio, const QColor& primary)
{
    const QSizeF logical = size(figures);
    QImage image(QSize(std::ceil(logical.width() * devicePixelRatio), std::ceil(logical.height() * devicePixelRatio)),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    // Cleared by hand: QImage::fill hands images of this size to worker threads, which costs
    // more in wake-ups than the clearing itself.
    std::memset(image.bits(), 0, size_t(image.sizeInBytes()));
    QPainter painter(&image);
    paint(painter, QPointF(0, 0), figures, primary);
    return image;
}

StripWidget::StripWidget(QColor primary, QWidget* parent)
    : QWidget(parent)
    , primary_(primary)
{
    setObjectName(QStringLiteral("strip"));
    setAccessibleName(QStringLiteral("Tray strip"));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void StripWidget::setFigures(const StripFigures& figures)
{
    if (figures == figures_)
        return;
    const bool widthChanges = figures.batteryTime.has_value() != figures_.batteryTime.has_value();
    figures_ = figures;
    setAccessibleDescription(stripLabel(figures_));
    if (widthChanges)
        updateGeometry();
    update();
}

QSize StripWidget::sizeHint() const
{
    return StripRenderer::size(figures_).toSize() + QSize(1, 0);
}

void StripWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QSizeF natural = StripRenderer::size(figures_);
    StripRenderer::paint(painter, QPointF((width() - natural.width()) / 2, (height() - natural.height()) / 2), figures_,
                         primary_);
}

} // namespace tallowmere
