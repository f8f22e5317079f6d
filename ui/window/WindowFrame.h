#pragma once

#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

#include <optional>

namespace tallowmere {

// Where the main window opens, from the frame saved in the preferences.
namespace windowFrame {

inline constexpr QSize defaultSize{1280, 860};
inline constexpr QSize minimumSize{1080, 720};

// "x y width height"; anything else reads as no frame.
std::optional<QRect> parse(const QString& text);
QString format(const QRect& frame);

// The saved frame when it is usable. A frame smaller than the minimum gives the default size
// centred on `primary`; a frame on none of `screens` keeps its size and is centred on
// `primary` instead. Screens are given by their available geometry.
QRect restore(const std::optional<QRect>& saved, const QList<QRect>& screens, const QRect& primary);

} // namespace windowFrame

} // namespace tallowmere
