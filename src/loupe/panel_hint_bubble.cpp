#include "loupe/panel_hint_bubble.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>

#include "controls/drawing.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"

namespace velicor {

namespace {

constexpr double padding = 2;
constexpr QSizeF textPadding(10, 6);  // on each side
constexpr double bubbleRadius = 8;
constexpr QSizeF pointer(12, 6);
constexpr double distanceToChip = 8;
constexpr double distanceToScreenEdge = 4;

QString text() { return QStringLiteral("Panel hidden — this button brings it back"); }

QFont textFont() { return desktop::interfaceFont(11, QFont::Medium); }

// An even number: the pointer's edges then lie on whole points too.
int evenCeiling(double value) { return 2 * static_cast<int>(std::ceil(value / 2)); }

}  // namespace

QPainterPath PanelHintBubble::Triangle::path(const QRectF& rect) {
  QPainterPath path;
  path.moveTo(rect.topLeft());
  path.lineTo(rect.topRight());
  path.lineTo(rect.center().x(), rect.bottom());
  path.closeSubpath();
  return path;
}

PanelHintBubble::PanelHintBubble(QWidget* parent) : QWidget(parent) { setAccessibleName(text()); }

QSize PanelHintBubble::sizeHint() const {
  const QFontMetricsF metrics(textFont());
  return {evenCeiling(metrics.horizontalAdvance(text()) + 2 * (textPadding.width() + padding)),
          static_cast<int>(std::ceil(metrics.height() + 2 * (textPadding.height() + padding) + pointer.height()))};
}

QRectF PanelHintBubble::ground() const {
  return QRectF(rect()).adjusted(padding, padding, -padding, -padding - pointer.height());
}

QPainterPath PanelHintBubble::outline() const {
  const QRectF body = ground();
  QPainterPath path = desktop::continuousCorners(body, bubbleRadius);
  path.setFillRule(Qt::WindingFill);
  const QPointF corner(body.center().x() - pointer.width() / 2, body.bottom());
  path.addPath(Triangle::path(QRectF(corner, pointer)));
  return path;
}

DesktopPoint PanelHintBubble::place(const DesktopRect& chip, DesktopSize size,
                                    const std::optional<DesktopRect>& visibleFrame) {
  DesktopPoint corner{chip.midX() - size.width * 0.5, chip.maxY() + distanceToChip};
  if (!visibleFrame) return corner;
  corner.x = std::max(corner.x, visibleFrame->minX() + distanceToScreenEdge);
  corner.x = std::min(corner.x, visibleFrame->maxX() - size.width - distanceToScreenEdge);
  if (visibleFrame->maxY() < corner.y + size.height) corner.y = chip.minY() - size.height - distanceToChip;
  return corner;
}

void PanelHintBubble::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillPath(outline(), look::systemYellow);
  controls::drawCentred(painter, ground(), textFont(), Qt::black, text());
}

}  // namespace velicor
