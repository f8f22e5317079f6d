#pragma once

#include "ui/components/Theme.h"

#include <QWidget>

namespace tallowmere {

// A horizontal usage bar: a rounded track filled from the left by `fraction` (clamped to 0...1).
class ProgressBar : public QWidget {
    Q_OBJECT
public:
    explicit ProgressBar(const Theme& theme, QColor accent, QWidget* parent = nullptr);

    void setFraction(double fraction);
    double fraction() const { return fraction_; }

    QSize sizeHint() const override { return {160, 6}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& theme_;
    QColor accent_;
    double fraction_ = 0;
};

} // namespace tallowmere
