#include "ui/tray/StripRenderer.h"

#include "ui/components/Sparkline.h"
#include "ui/components/Theme.h"

#include <QFontDatabase>
#include <QPainter>

#include <cmath>

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
QFont pixelFont(int pixels, QFont::Weight weight, bool fixedPitch = false)
{
    QFont f = QFontDatabase::systemFont(fixedPitch ? QFontDatabase::FixedFont : QFontDatabase::GeneralFont);
    f.setPixelSize(pixels);
    f.setWeight(weight);
    return f;
}

const QFont& captionFont()
{
    static const QFont f = pixelFont(9, QFont::Bold);
    return f;
}
const QFont& valueFont()
{
    static const QFont f = pixelFont(11, QFont::DemiBold);
    return f;
}
const QFont& rateFont()
{
    static const QFont f = pixelFont(9, QFont::Normal, true);
    return f;
}

// A caption over a value, centred in a box of `width`.
void paintCaptioned(QPainter& p, qreal x, qreal width, const QString& caption, const QString& value,
                    const QColor& primary, qreal valueOpacity)
{
    p.setFont(captionFont());
    p.setPen(Theme::withOpacity(primary, 0.50));
    p.drawText(QRectF(x - 4, 0, width + 8, 10), Qt::AlignHCenter | Qt::AlignBottom, caption);
    p.setFont(valueFont());
    p.setPen(Theme::withOpacity(primary, valueOpacity));
    p.drawText(QRectF(x - 6, 9, width + 12, 13), Qt::AlignHCenter | Qt::AlignVCenter, value);
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
    p.setFont(rateFont());
    p.setPen(Theme::withOpacity(primary, 0.62));
    // Two 10.5-pixel lines with one pixel between them fill the strip's height.
    p.drawText(QRectF(x - 10, 0, kRatesBox + 10, 10.5), Qt::AlignRight | Qt::AlignVCenter, downloadText(download));
    p.drawText(QRectF(x - 10, 11.5, kRatesBox + 10, 10.5), Qt::AlignRight | Qt::AlignVCenter, uploadText(upload));
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

void StripRenderer::paint(QPainter& painter, QPointF origin, const StripFigures& figures, const QColor& primary)
{
    painter.save();
    painter.translate(origin);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setOpacity(painter.opacity() * 0.92);
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
    image.fill(Qt::transparent);
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
