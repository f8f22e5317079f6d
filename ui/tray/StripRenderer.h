#pragma once

#include "ui/tray/StripFigures.h"

#include <QColor>
#include <QImage>
#include <QSizeF>
#include <QWidget>

class QPainter;

namespace tallowmere {

// Draws the tray strip: "C" and "M" with their whole-number values and ten-sample sparklines,
// a rule, the stacked download and upload rates, and "B" with the battery time when there is
// one. Sizes are in logical pixels; the painter's device decides the density.
class StripRenderer {
public:
    static constexpr qreal kHeight = 22;

    // The strip's natural size for these figures (the battery part widens it).
    static QSizeF size(const StripFigures& figures);
    // Paints the strip with its top-left corner at `origin`, in `primary` at the strip's opacities.
    static void paint(QPainter& painter, QPointF origin, const StripFigures& figures, const QColor& primary);
    // The strip in an image of the given density, transparent around the drawing.
    static QImage render(const StripFigures& figures, qreal devicePixelRatio, const QColor& primary);
};

// The strip as a widget, for the head of the popover: repaints only when a figure changes.
class StripWidget : public QWidget {
    Q_OBJECT
public:
    explicit StripWidget(QColor primary, QWidget* parent = nullptr);

    void setFigures(const StripFigures& figures);
    const StripFigures& figures() const { return figures_; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor primary_;
    StripFigures figures_;
};

} // namespace tallowmere
