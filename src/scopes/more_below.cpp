#include "scopes/more_below.h"

#include <QPainter>

#include "controls/drawing.h"
#include "platform/desktop/look.h"

namespace velicor {

namespace {

constexpr double chevronWidth = 10;
constexpr double chevronHeight = 3.5;
constexpr double strokeWidth = 1.5;

}  // namespace

MoreBelow::MoreBelow(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  hide();
}

void MoreBelow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QRectF whole = controls::pixelAligned(painter, rect());
  painter.fillRect(QRectF(whole.topLeft(), QSizeF(whole.width(), controls::pixelWidth(painter, 1))),
                   look::hairline);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(look::tertiaryText, strokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  const QPointF tip(whole.center().x(), whole.center().y() + chevronHeight / 2);
  painter.drawPolyline(QPolygonF({tip + QPointF(-chevronWidth / 2, -chevronHeight), tip,
                                  tip + QPointF(chevronWidth / 2, -chevronHeight)}));
}

}  // namespace velicor
