#pragma once

#include <QColor>
#include <QString>

class QBoxLayout;
class QLabel;
class QWidget;

namespace tallowmere {

class AreaGraph;
class Card;
struct Theme;

// Pieces the live CPU and memory cards are made of.

// The last minute of a percentage, 0 to 100 with its grid labelled, captioned "Last 60s".
AreaGraph* addPercentHistoryGraph(const Theme& theme, QColor accent, Card& card);

// The large figure heading a live card, sized for "100%".
QLabel* makeHeadlineFigure(const Theme& theme, QWidget* parent);

// A coloured dot, a title and a figure in a row; returns the figure's label, sized for
// `widest`, the widest text it will show.
QLabel* addLegendEntry(const Theme& theme, QColor color, const QString& title, const QString& widest, QBoxLayout& row,
                       QWidget* parent);

// A title over a figure ("Used" over "8.2 GB"); the figure is sized for `widest`.
QLabel* addStackedFigure(const Theme& theme, const QString& title, const QString& widest, QBoxLayout& row, QWidget* parent);

} // namespace tallowmere
