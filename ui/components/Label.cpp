#include "ui/components/Label.h"

#include <QLabel>
#include <QPalette>

namespace tallowmere {

QLabel* makeLabel(const QString& text, const QFont& font, const QColor& color, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setFont(font);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setPalette(palette);
    return label;
}

} // namespace tallowmere
