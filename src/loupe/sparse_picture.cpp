#include "loupe/sparse_picture.h"

#include <algorithm>

#include <QPainter>

namespace velicor {

namespace {

constexpr int side = 32;  // of the tiles that are kept or left out, in pixels

bool hasSomething(const QImage& image, const QRect& tile) {
  for (int y = tile.top(); y <= tile.bottom(); ++y) {
    const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    if (std::any_of(row + tile.left(), row + tile.right() + 1, [](QRgb pixel) { return pixel != 0; }))
      return true;
  }
  return false;
}

}  // namespace

SparsePicture::SparsePicture(const QImage& image) {
  const QImage pixels = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < pixels.height(); y += side) {
    const int height = std::min(side, pixels.height() - y);
    QRect run;  // tiles side by side become one part
    for (int x = 0; x < pixels.width(); x += side) {
      const QRect tile(x, y, std::min(side, pixels.width() - x), height);
      if (hasSomething(pixels, tile)) {
        run |= tile;
        if (tile.right() + 1 < pixels.width()) continue;
      }
      if (!run.isEmpty()) parts_.emplace_back(run.topLeft(), pixels.copy(run));
      run = {};
    }
  }
}

void SparsePicture::paint(QPainter& painter) const {
  for (const auto& [corner, part] : parts_)
    painter.drawImage(QPointF(corner) / part.devicePixelRatio(), part);
}

}  // namespace velicor
