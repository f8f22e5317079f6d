#pragma once

#include "ui/components/ProgressBar.h"

namespace tallowmere {

// A capacity bar: the used share of a disk or volume, a little taller than a usage bar and
// announcing its share to screen readers.
class StorageBar : public ProgressBar {
    Q_OBJECT
public:
    StorageBar(const Theme& theme, const QColor& accent, QWidget* parent = nullptr);

    // Clamped to 0...1.
    void setUsedFraction(double fraction);
    double usedFraction() const { return fraction(); }

    QSize sizeHint() const override { return {200, 8}; }
};

} // namespace tallowmere
