#pragma once

#include "ui/components/Theme.h"

#include <QList>
#include <QPolygonF>
#include <QWidget>

class QPainter;

namespace tallowmere {

// The line of a history graph: every value, spread across `size`, scaled against `maxValue`
// (1 when that is 1 or less) and clamped to the frame. Empty below two values.
QPolygonF areaGraphPoints(const QList<double>& values, double maxValue, QSizeF size);

// Strokes the line in `accent` and fills the area below it with the accent fading from 30 %
// at the top to nothing at the bottom. Paints nothing below two values.
void paintAreaGraph(QPainter& painter, const QRectF& frame, const QList<double>& values, double maxValue,
                    const QColor& accent, qreal lineWidth = 1.6);

// A history graph as a widget; below two values it says "Collecting data…" instead.
class AreaGraph : public QWidget {
    Q_OBJECT
public:
    explicit AreaGraph(const Theme& theme, QColor accent, QWidget* parent = nullptr);

    void setValues(QList<double> values);
    void setMaxValue(double maxValue);
    // Faint lines across the graph at these values, labelled "%.0f" in a gutter on the right;
    // none by default.
    void setAxisTicks(QList<double> ticks);
    const QList<double>& values() const { return values_; }
    bool isCollecting() const { return values_.size() < 2; }

    QSize sizeHint() const override { return {200, 44}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRectF paintAxis(QPainter& painter);

    const Theme& theme_;
    QColor accent_;
    QList<double> values_;
    double maxValue_ = 100;
    QList<double> ticks_;
};

} // namespace tallowmere
