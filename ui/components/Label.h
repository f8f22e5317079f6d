#pragma once

#include <QColor>
#include <QFont>
#include <QString>

class QLabel;
class QWidget;

namespace tallowmere {

// A plain text label in the given font and colour, the one way every card and page makes one.
QLabel* makeLabel(const QString& text, const QFont& font, const QColor& color, QWidget* parent = nullptr);

} // namespace tallowmere
