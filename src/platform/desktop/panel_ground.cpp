#include "platform/desktop/panel_ground.h"

#include <algorithm>
#include <cmath>

#include <QPainter>
#include <QPainterPath>
#include <QRegion>
#include <QTransform>

#include "platform/desktop/compositor.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/look.h"
#include "platform/desktop/pixel_place.h"
#include "platform/desktop/toolkit_window.h"

namespace velicor::desktop {

PanelGround::PanelGround(Desktop& desktop, QWidget* parent) : QWidget(parent), desktop_(desktop) {
  compositorChanged_ = desktop_.compositor().changed.subscribe([this] {
    applyBlur();
    update();
  });
}

void PanelGround::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const bool composed = desktop_.compositor().isPresent();
  const QRectF whole = pixelPlaceOf(*this).inWidget;
  const double scale = devicePixelRatioF();
  const double line = std::max(1.0, std::round(scale)) / scale;
  const QRectF edge = whole.adjusted(line / 2, line / 2, -line / 2, -line / 2);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPainterPath ground = continuousCorners(whole, composed ? cornerRadius : 0);
  painter.fillPath(ground, composed ? look::faded(look::panelGround, translucentAlpha) : look::panelGround);
  painter.strokePath(continuousCorners(edge, composed ? cornerRadius - line / 2 : 0),
                     QPen(look::panelEdge, line));
}

void PanelGround::resizeEvent(QResizeEvent*) { applyBlur(); }

void PanelGround::showEvent(QShowEvent*) { applyBlur(); }

void PanelGround::applyBlur() {
  if (!isVisible()) return;
  const double scale = devicePixelRatioF();
  const QPainterPath shape = continuousCorners(QRectF(rect()), cornerRadius);
  const QRegion inPixels(QTransform::fromScale(scale, scale).map(shape).toFillPolygon().toPolygon());
  toolkit::setBlurBehind(toolkit::identifierOf(*window()),
                         desktop_.compositor().isPresent() ? inPixels : QRegion());
}

}  // namespace velicor::desktop
