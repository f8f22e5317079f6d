#include "ui/components/StorageBar.h"

namespace tallowmere {

StorageBar::StorageBar(const Theme& theme, const QColor& accent, QWidget* parent)
    : ProgressBar(theme, accent, parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(8);
}

void StorageBar::setUsedFraction(double fraction)
{
    setFraction(fraction);
    setAccessibleDescription(QString::asprintf("%.0f%% used", usedFraction() * 100));
}

} // namespace tallowmere
