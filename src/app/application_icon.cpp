#include "app/application_icon.h"

#include <array>

#include <QPainter>
#include <QPen>
#include <QPixmap>

#include "menubar/status_icon.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"

namespace velicor::application_icon {

namespace {

constexpr std::array sizes{16, 24, 32, 48, 64, 128};

// In the squares of the installed icon, of 128 a side.
constexpr double grid = 128;
constexpr QRectF tile(4, 4, 120, 120);
constexpr double cornerShare = 0.22;
constexpr double edge = 2;
constexpr double sign = 92;

}  // namespace

void draw(QPainter& painter, double side) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(side / grid, side / grid);
  painter.setPen(QPen(look::controlTrack, edge));
  painter.setBrush(look::scopeGround);
  painter.drawPath(desktop::continuousCorners(tile.adjusted(edge / 2, edge / 2, -edge / 2, -edge / 2),
                                              tile.width() * cornerShare));
  painter.translate((grid - sign) / 2, (grid - sign) / 2);
  painter.scale(sign / status_icon::side, sign / status_icon::side);
  status_icon::draw(painter, look::accent);
  painter.restore();
}

QIcon make() {
  QIcon icon;
  for (const int pixels : sizes) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    draw(painter, pixels);
    painter.end();
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace velicor::application_icon
