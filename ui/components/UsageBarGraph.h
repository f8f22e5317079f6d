#pragma once

#include "ui/components/Theme.h"

#include <QList>
#include <QRectF>
#include <QWidget>

#include <cstdint>

namespace tallowmere {

// One bar: traffic in (drawn at the bottom) and out (stacked on top).
struct UsageBar {
    std::uint64_t in = 0;
    std::uint64_t out = 0;
    bool operator==(const UsageBar&) const = default;
};

// Where the parts of one bar go in a frame of `size`: every bar gets an equal slice of the
// width, and heights scale so that the busiest bar (in + out) fills the frame.
struct UsageBarGeometry {
    QRectF in;
    QRectF out;
};
QList<UsageBarGeometry> usageBarGeometry(const QList<UsageBar>& bars, QSizeF size);

// Stacked bars of recorded traffic, oldest on the left, with a label (the peak) in the top left
// corner. Draws nothing for an empty series or one without traffic.
class UsageBarGraph : public QWidget {
    Q_OBJECT
public:
    UsageBarGraph(const Theme& theme, QColor inColor, QColor outColor, QWidget* parent = nullptr);

    void setBars(QList<UsageBar> bars, QString label);
    const QList<UsageBar>& bars() const { return bars_; }
    const QString& label() const { return label_; }

    QSize sizeHint() const override { return {480, 140}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
    QColor inColor_;
    QColor outColor_;
    QList<UsageBar> bars_;
    QString label_;
};

} // namespace tallowmere
