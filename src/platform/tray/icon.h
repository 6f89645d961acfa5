#pragma once

#include <functional>

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QList>
#include <QString>

#include "platform/tray/bus_types.h"

class QPainter;

namespace velicor::tray {

// An icon of one colour, which whoever shows it chooses for his ground.
struct TemplateIcon {
  double side = 0;                      // of the square that is painted, in points
  std::function<void(QPainter&)> paint;  // in any opaque colour; the square's top-left corner is the origin
  QString symbolicName;                 // of the same icon in the installed icon theme
};

// The icon in a square of that many pixels. Without a colour it is white with a thin dark edge, to be seen on
// light and dark grounds alike.
QImage rendered(const TemplateIcon& icon, int pixels, const QColor& color = {});

// In the sizes that trays have, at scale 1 and 2.
QIcon iconOf(const TemplateIcon& icon, const QColor& color);
QList<IconPixmap> pixmapsOf(const TemplateIcon& icon);

// The icon's name where the theme's file of that name is installed, else an empty one.
QString installedName(const TemplateIcon& icon);

}  // namespace velicor::tray
