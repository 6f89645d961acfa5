#pragma once

#include <cmath>

#include <QPainter>
#include <QWidget>

#include "controls/drawing.h"
#include "platform/desktop/look.h"

namespace velicor::controls {

// A faint line across the width it is given, 1 point high.
class Hairline : public QWidget {
 public:
  explicit Hairline(QWidget* parent = nullptr) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(1);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    // As thin everywhere, at a scale with a fraction too: at some places the point has a pixel less than at others.
    QRectF line = pixelAligned(painter, rect());
    line.setHeight(std::floor(devicePixelRatioF()) / devicePixelRatioF());
    painter.fillRect(line, look::hairline);
  }
};

}  // namespace velicor::controls
