#include "platform/desktop/panel_ground.h"

#include <QPainter>
#include <QPainterPath>
#include <QRegion>
#include <QTransform>

#include "platform/desktop/compositor.h"
#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/look.h"
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
  if (!desktop_.compositor().isPresent()) return painter.fillRect(rect(), look::panelGround);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillPath(continuousCorners(rect(), cornerRadius), look::faded(look::panelGround, translucentAlpha));
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
