#include "ui/components/Icons.h"

#include <QImage>

#include <gtest/gtest.h>

using namespace tallowmere;

TEST(Icons, EverySymbolHasOurOwnPictureAndAThemeName)
{
    for (const QString& symbol : Icons::symbols()) {
        EXPECT_TRUE(Icons::hasBundled(symbol)) << symbol.toStdString();
        EXPECT_FALSE(Icons::themeName(symbol).isEmpty()) << symbol.toStdString();
        EXPECT_FALSE(Icons::icon(symbol).isNull()) << symbol.toStdString();
    }
    EXPECT_TRUE(Icons::themeName(QStringLiteral("no.such.symbol")).isEmpty());
    EXPECT_TRUE(Icons::tinted(QStringLiteral("no.such.symbol"), Qt::red, 16).isNull());
}

TEST(Icons, TintedIconsTakeTheColourAndTheDeviceScale)
{
    const QPixmap pixmap = Icons::tinted(QStringLiteral("cpu"), QColor(10, 200, 30), 20, 2.0);
    ASSERT_EQ(pixmap.width(), 40);
    EXPECT_DOUBLE_EQ(pixmap.devicePixelRatio(), 2.0);
    const QImage image = pixmap.toImage();
    int painted = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.alpha() == 255) {
                ++painted;
                EXPECT_EQ(c.rgb(), QColor(10, 200, 30).rgb());
            }
        }
    EXPECT_GT(painted, 40);
}
