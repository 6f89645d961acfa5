#include "controls/push_button.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>

#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"

namespace velicor::controls {

namespace {

constexpr int titlePadding = 10;
constexpr int narrowest = 48;
constexpr double buttonRadius = 5;

QFont buttonFont() { return desktop::interfaceFont(11, QFont::Medium); }

QColor groundOf(bool isDefault, Touch touch) {
  const QColor ground = isDefault ? look::accent : look::controlTrack;
  if (touch == Touch::hovered) return isDefault ? ground.lighter(112) : look::controlTrackLit;
  if (touch == Touch::pressed) return isDefault ? ground.darker(118) : look::controlTrackPressed;
  return touched(ground, touch);
}

}  // namespace

PushButton::PushButton(const QString& title, QWidget* parent) : ButtonControl(parent), title_(title) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PushButton::setTitle(const QString& title) {
  if (title == title_) return;
  title_ = title;
  updateGeometry();
  update();
}

void PushButton::setDefault(bool on) {
  default_ = on;
  update();
}

bool PushButton::clickDefault(const QWidget& window) {
  for (QWidget* child : window.findChildren<QWidget*>()) {
    auto* button = dynamic_cast<PushButton*>(child);
    if (!button || !button->default_ || !button->isEnabled() || !button->isVisible()) continue;
    button->click();
    return true;
  }
  return false;
}

QSize PushButton::sizeHint() const {
  const double text = QFontMetricsF(buttonFont()).horizontalAdvance(title_);
  return {std::max(narrowest, static_cast<int>(std::ceil(text)) + 2 * titlePadding), controlHeight};
}

double PushButton::outlineRadius() const { return buttonRadius; }

void PushButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF body = pixelAligned(painter, rect());
  painter.fillPath(desktop::continuousCorners(body, buttonRadius), groundOf(default_, touch()));
  if (!default_) painter.fillPath(continuousBorder(body, buttonRadius, pixelWidth(painter, 1)), look::hairline);
  const QColor text = default_ ? QColor(Qt::black) : look::primaryText;
  drawCentred(painter, body, buttonFont(), touch() == Touch::disabled ? touched(text, Touch::disabled) : text,
              title_);
}

}  // namespace velicor::controls
