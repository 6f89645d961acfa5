#pragma once

class QPainter;
class QColor;

namespace velicor {

// The program's sign: a vectorscope's circle with the needle of the skin-tone line. Status areas show it as a
// template that they tint.
namespace status_icon {

inline constexpr double side = 18;  // points, both ways

// Into the square at the painter's origin; a translated and scaled painter puts it elsewhere.
void draw(QPainter& painter, const QColor& color);

}  // namespace status_icon
}  // namespace velicor
