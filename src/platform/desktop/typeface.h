#pragma once

#include <QFont>
#include <QPointF>
#include <QSizeF>
#include <QString>

class QPainter;

// The interface's type. Sizes in points of the layout are logical pixels.
namespace velicor::desktop {

QFont interfaceFont(double size, QFont::Weight weight = QFont::Normal);

// The desktop's font whose characters all take the same room.
QFont monospacedFont(double size);

// Text whose digits all take the same room, so that it does not jiggle while they change. The size is what
// drawTabular covers, its height the font's line height.
QSizeF tabularSize(const QFont& font, const QString& text);

// Paints from the top-left corner given, in the painter's pen.
void drawTabular(QPainter& painter, QPointF topLeft, const QFont& font, const QString& text);

}  // namespace velicor::desktop
