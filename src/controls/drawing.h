#pragma once

#include <QColor>
#include <QFont>
#include <QPainterPath>
#include <QRectF>
#include <QString>

class QPainter;

// What our controls are painted with. Lengths are points of the painter.
namespace velicor::controls {

// The rectangle with its edges on the nearest device pixels, wherever on the device the painter's origin is.
QRectF pixelAligned(const QPainter& painter, const QRectF& rect);

// A line's width as a whole number of device pixels, at least one.
double pixelWidth(const QPainter& painter, double width);

// The border of that width inside a rectangle with continuous corners.
QPainterPath continuousBorder(const QRectF& rect, double radius, double width);

// One line of text in the middle of a rectangle, by the height of its capitals, its baseline on a device
// pixel.
void drawCentred(QPainter& painter, const QRectF& rect, const QFont& font, const QColor& color,
                 const QString& text);

// How the mouse is on a control.
enum class Touch { none, hovered, pressed, disabled };

// A colour as it answers to that.
QColor touched(QColor color, Touch touch);

// The knob of a switch or a slider.
QColor knobColor(Touch touch);

}  // namespace velicor::controls
