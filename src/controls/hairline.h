#pragma once

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
    painter.fillRect(pixelAligned(painter, rect()), look::hairline);
  }
};

}  // namespace velicor::controls
