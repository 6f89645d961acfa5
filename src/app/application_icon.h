#pragma once

#include <QIcon>

class QPainter;

namespace velicor::application_icon {

// The program's sign on a dark tile, as the installed icon has it, into the square at the painter's origin.
void draw(QPainter& painter, double side);

// In the sizes that task bars and switchers have: for desktops that don't find the installed one.
QIcon make();

}  // namespace velicor::application_icon
