#include "power/BatteryInfo.h"
#include "ui/components/AreaGraph.h"
#include "ui/components/Sparkline.h"
#include "ui/tray/LiveIcon.h"
#include "ui/tray/StripFigures.h"
#include "ui/tray/StripRenderer.h"

#include <QPainter>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

StripFigures sample(std::optional<QString> battery = std::nullopt)
{
    return {.cpu = 37.5,
            .cpuHistory = {10, 20, 30},
            .memory = 62.4,
            .memoryHistory = {60, 62},
            .download = 1536,
            .upload = 20480,
            .batteryTime = std::move(battery)};
}

// Alpha summed over a column range of an image: where something was drawn.
int inkIn(const QImage& image, int fromX, int toX)
{
    int ink = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = fromX; x < std::min(toX, image.width()); ++x)
            ink += qAlpha(image.pixel(x, y));
    return ink;
}

} // namespace

TEST(StripFigures, WholePercentRoundsHalfAwayFromZero)
{
    EXPECT_EQ(wholePercent(37.5), "38");
    EXPECT_EQ(wholePercent(37.4), "37");
    EXPECT_EQ(wholePercent(99.5), "100");
    EXPECT_EQ(wholePercent(-0.5), "-1");
    EXPECT_EQ(wholePercent(std::nan("")), "0");
}

TEST(StripFigures, RatesUseTheCompactFormatWithArrows)
{
    EXPECT_EQ(downloadText(0), "\u2193 0B");
    EXPECT_EQ(uploadText(1023), "\u2191 1023B");
    EXPECT_EQ(downloadText(1024), "\u2193 1.0K");
    EXPECT_EQ(downloadText(10240), "\u2193 10K");
    EXPECT_EQ(downloadText(1.5 * std::pow(1024.0, 5)), "\u2193 1536T");
}

// The time texts themselves are the battery record's (tested with it); the strip adds the
// rule that a battery that is not there has no time, whatever the record still holds.
TEST(StripFigures, BatteryTimeOnlyWithABattery)
{
    BatteryInfo battery;
    battery.isPresent = true;
    battery.timeRemainingMinutes = 125;
    EXPECT_EQ(stripBatteryTime(battery), "2:05");
    battery.isPresent = false;
    EXPECT_EQ(stripBatteryTime(battery), std::nullopt);
}

TEST(StripFigures, LabelGuideAndToolTipFollowTheBattery)
{
    EXPECT_EQ(stripLabel(sample()), "C 38  M 62  \u2193 1.5K \u2191 20K");
    EXPECT_EQ(stripLabel(sample(QStringLiteral("2:05"))), "C 38  M 62  \u2193 1.5K \u2191 20K  B 2:05");
    EXPECT_FALSE(stripLabelGuide(sample()).contains(u'B'));
    EXPECT_TRUE(stripLabelGuide(sample(QStringLiteral("2:05"))).endsWith(u"B 88:88"));
    EXPECT_GE(stripLabelGuide(sample()).size(), stripLabel(sample()).size());
    EXPECT_EQ(stripToolTip(sample(QStringLiteral("2:05"))),
              "CPU 38%\nMemory 62%\nDownload 1.5 KB/s\nUpload 20 KB/s\nBattery 2:05");
}

TEST(Sparkline, EndPointsForEdgeValuesAndOnlyTheLastValues)
{
    const QSizeF size(26, 14);
    // No values: a flat line at mid-height across the whole width.
    EXPECT_EQ(sparklinePoints({}, size, 10), QPolygonF({QPointF(0, 7), QPointF(26, 7)}));
    // One value: flat at its own height; 100 is the top.
    EXPECT_EQ(sparklinePoints({100}, size, 10), QPolygonF({QPointF(0, 0), QPointF(26, 0)}));
    // 0 at the bottom, 100 at the top, outside values clamped.
    const QPolygonF clamped = sparklinePoints({0, 100, -20, 150}, size, 10);
    ASSERT_EQ(clamped.size(), 4);
    EXPECT_EQ(clamped[0], QPointF(0, 14));
    EXPECT_EQ(clamped[1].y(), 0);
    EXPECT_EQ(clamped[2].y(), 14);
    EXPECT_EQ(clamped[3], QPointF(26, 0));

    // Only the last ten values are drawn: fifteen zeros, then ten at mid-height.
    QList<double> values(15, 0.0);
    values.append(QList<double>(10, 50.0));
    const QPolygonF points = sparklinePoints(values, size, 10);
    ASSERT_EQ(points.size(), 10);
    for (const QPointF& p : points)
        EXPECT_EQ(p.y(), 7);
}

// The collecting state is checked on the live pages.
TEST(AreaGraph, ScalesAgainstTheMaximumAndDrawsNothingFromOneValue)
{
    EXPECT_TRUE(areaGraphPoints({42}, 100, QSizeF(100, 50)).isEmpty());
    // A maximum of 1 or less scales against 1.
    EXPECT_EQ(areaGraphPoints({0.5, 3}, 0.2, QSizeF(100, 50)), QPolygonF({QPointF(0, 25), QPointF(100, 0)}));
}

TEST(AreaGraph, FillFadesTowardsTheBottom)
{
    QImage image(100, 100, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paintAreaGraph(painter, QRectF(0, 0, 100, 100), {100, 100, 100}, 100, QColor(0, 200, 0));
    painter.end();
    const int nearTop = qAlpha(image.pixel(50, 10));
    const int nearBottom = qAlpha(image.pixel(50, 95));
    EXPECT_GT(nearTop, nearBottom);
    EXPECT_LE(nearTop, 255 * 0.31);
}

TEST(StripRenderer, BatteryElementOnlyWithABatteryTime)
{
    const QSizeF without = StripRenderer::size(sample());
    const QSizeF with = StripRenderer::size(sample(QStringLiteral("2:05")));
    // Gap, rule, gap and the 30-point battery box.
    EXPECT_EQ(with.width() - without.width(), 11 + 1 + 11 + 30);

    const QImage plain = StripRenderer::render(sample(), 1, Qt::white);
    const QImage battery = StripRenderer::render(sample(QStringLiteral("2:05")), 1, Qt::white);
    const int tail = int(without.width());
    EXPECT_GT(inkIn(battery, tail - 4, battery.width()), 0);
    // Everything before the battery part is drawn the same.
    EXPECT_EQ(plain.copy(0, 0, tail - 4, plain.height()), battery.copy(0, 0, tail - 4, battery.height()));
}

TEST(StripRenderer, DrawsAtAnyDensity)
{
    const QImage doubled = StripRenderer::render(sample(), 2, Qt::white);
    const QSizeF logical = StripRenderer::size(sample());
    EXPECT_EQ(doubled.width(), int(std::ceil(logical.width() * 2)));
    EXPECT_EQ(doubled.deviceIndependentSize(), logical);
    // The CPU sparkline spans x 26...52 of the strip: its last value (30) ends low, its first
    // (10) lower still, so ink sits in the lower half there.
    EXPECT_GT(inkIn(doubled.copy(0, 22, doubled.width(), 22), 26 * 2, 52 * 2), 0);
}

TEST(LiveIcon, SquareAtEverySizeWithBothLines)
{
    for (int size : LiveIcon::sizes())
        EXPECT_EQ(LiveIcon::render(sample(), size).size(), QSize(size, size));
    // CPU at 100 draws its line along the top band, memory at 0 along the bottom band.
    StripFigures extremes = sample();
    extremes.cpuHistory = {100, 100};
    extremes.memoryHistory = {0, 0};
    const QImage icon = LiveIcon::render(extremes, 48);
    const QColor top = icon.pixelColor(24, 7);
    const QColor bottom = icon.pixelColor(24, 40);
    EXPECT_GT(top.blue(), top.red());      // the CPU colour
    EXPECT_GT(bottom.red(), bottom.green()); // the memory colour
}
