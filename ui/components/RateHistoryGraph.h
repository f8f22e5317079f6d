#pragma once

#include "ui/components/Theme.h"

#include <QList>
#include <QWidget>

namespace tallowmere {

// The last minute of a pair of rates (download and upload, read and write) as two area graphs
// on one scale, the busiest sample of either reaching the top. Below two samples it says
// "Collecting data…" instead.
class RateHistoryGraph : public QWidget {
    Q_OBJECT
public:
    RateHistoryGraph(const Theme& theme, QColor firstColor, QColor secondColor, QWidget* parent = nullptr);

    void setSeries(QList<double> first, QList<double> second);
    const QList<double>& first() const { return first_; }
    const QList<double>& second() const { return second_; }
    // The value drawn at the top of the frame: the largest sample, at least 1.
    double scale() const;
    bool isCollecting() const { return first_.size() < 2 && second_.size() < 2; }

    QSize sizeHint() const override { return {320, 96}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
    QColor firstColor_;
    QColor secondColor_;
    QList<double> first_;
    QList<double> second_;
};

} // namespace tallowmere
