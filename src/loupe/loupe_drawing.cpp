#include "loupe/loupe_drawing.h"

#include <string_view>

#include <QPainter>
#include <QPainterPath>
#include <QString>

#include "loupe/loupe_geometry.h"
#include "platform/desktop/look.h"
#include "platform/desktop/screen_layout.h"
#include "platform/desktop/symbols.h"
#include "platform/desktop/typeface.h"

namespace velicor {

namespace {

constexpr double outlineWidth = 2;
constexpr double focusRingInset = 4;
constexpr double handleSide = 6;
constexpr double chipRadius = 3;
constexpr double symbolInset = 2;
constexpr double labelSize = 11;

class FramePainter {
 public:
  FramePainter(QPainter& painter, const FrameRect& area, const LoupeAppearance& appearance)
      : painter_(painter),
        area_(area),
        appearance_(appearance),
        base_(appearance.locked ? look::systemGrey : look::systemYellow) {
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.setPen(Qt::NoPen);
  }

  void draw() {
    // The stroke of the rectangle 1 point inside the bounds.
    drawRing(0, look::faded(base_, appearance_.locked ? 0.55 : 0.95));
    if (appearance_.focused) drawRing(focusRingInset, look::focusRing);
    if (!appearance_.locked) drawHandles();
    drawChip(loupe_geometry::moveChip(area_), "arrow.up.and.down.and.arrow.left.and.right",
             appearance_.locked ? 0.35 : 1.0);
    drawChip(loupe_geometry::panelChip(area_), "sidebar.right", appearance_.panelVisible ? 1.0 : 0.45);
    if (appearance_.interacting) drawSizeLabel();
  }

 private:
  QRectF aligned(const FrameRect& rect) const {
    return desktop::pixelAligned(desktop::toView(rect, area_.height), painter_.device()->devicePixelRatioF());
  }

  // A line along the bounds, as the ring between its two edges.
  void drawRing(double inset, const QColor& color) {
    const double scale = painter_.device()->devicePixelRatioF();
    const double width = roundHalfAway(outlineWidth * scale) / scale;
    const QRectF outer = aligned(area_.insetBy(inset, inset));
    QPainterPath ring;
    ring.addRect(outer);
    ring.addRect(outer.adjusted(width, width, -width, -width));
    painter_.fillPath(ring, color);
  }

  void drawHandles() {
    for (const FramePoint& point : loupe_geometry::handlePoints(area_)) {
      const double half = handleSide * 0.5;
      painter_.fillRect(aligned({point.x - half, point.y - half, handleSide, handleSide}), base_);
    }
  }

  void drawChip(const FrameRect& rect, std::string_view symbol, double alpha) {
    const QRectF chip = aligned(rect);
    painter_.setBrush(look::faded(look::systemYellow, 0.95 * alpha));
    painter_.drawRoundedRect(chip, chipRadius, chipRadius);
    painter_.setOpacity(alpha);
    desktop::drawSymbol(painter_, symbol, aligned(rect.insetBy(symbolInset, symbolInset)), Qt::black,
                        desktop::SymbolWeight::bold);
    painter_.setOpacity(1);
  }

  void drawSizeLabel() {
    const QString text = QStringLiteral("%1 \u00d7 %2")
                             .arg(static_cast<int>(appearance_.bounds.width))
                             .arg(static_cast<int>(appearance_.bounds.height));
    const QFont font = desktop::interfaceFont(labelSize, QFont::Medium);
    const QSizeF size = desktop::tabularSize(font, text);
    const FrameRect r = area_.insetBy(1, 1);
    const QRectF ground =
        aligned({r.minX() + 6, r.maxY() - size.height() - 10, size.width() + 10, size.height() + 4});
    painter_.setBrush(base_);
    painter_.drawRoundedRect(ground, chipRadius, chipRadius);
    painter_.setPen(Qt::black);
    desktop::drawTabular(painter_, ground.topLeft() + QPointF(5, 2), font, text);
    painter_.setPen(Qt::NoPen);
  }

  QPainter& painter_;
  const FrameRect& area_;
  const LoupeAppearance& appearance_;
  const QColor base_;
};

}  // namespace

void drawLoupeFrame(QPainter& painter, const FrameRect& area, const LoupeAppearance& appearance) {
  FramePainter(painter, area, appearance).draw();
}

}  // namespace velicor
