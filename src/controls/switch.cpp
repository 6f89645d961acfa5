#include "controls/switch.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>

#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"

namespace velicor::controls {

namespace {

constexpr double switchWidth = 26;
constexpr double switchHeight = 14;
constexpr double knobInset = 1;
constexpr double gap = 8;

QFont switchFont() { return desktop::interfaceFont(11); }

double titleWidth(const QString& title) {
  return std::ceil(QFontMetricsF(switchFont()).horizontalAdvance(title));
}

QColor mix(const QColor& a, const QColor& b, double share) {
  const auto part = [share](float from, float to) { return from + (to - from) * static_cast<float>(share); };
  return QColor::fromRgbF(part(a.redF(), b.redF()), part(a.greenF(), b.greenF()), part(a.blueF(), b.blueF()),
                          part(a.alphaF(), b.alphaF()));
}

struct TrackColors {
  QColor off = look::controlTrack;
  QColor on = look::accent;
};

TrackColors trackColors(Touch touch) {
  switch (touch) {
    case Touch::hovered:
      return {look::controlTrackLit, look::accent.lighter(112)};
    case Touch::pressed:
      return {look::controlTrackPressed, look::accent.darker(118)};
    case Touch::disabled:
      return {look::controlTrack, touched(look::accent, touch)};
    case Touch::none:
      break;
  }
  return {};
}

}  // namespace

Switch::Switch(const QString& title, QWidget* parent)
    : ButtonControl(parent), title_(title), knob_(0, [this] { update(); }) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Switch::setOn(bool on) {
  if (on != on_) turn(on);
}

void Switch::turn(bool on) {
  on_ = on;
  isVisible() ? knob_.moveTo(on ? 1 : 0) : knob_.jumpTo(on ? 1 : 0);
  announceChecked(*this);
}

void Switch::activate() {
  turn(!on_);
  if (onChange) onChange(on_);
}

QSize Switch::sizeHint() const {
  return {static_cast<int>(titleWidth(title_) + gap + switchWidth), controlHeight};
}

QRectF Switch::outline() const {
  return {width() - switchWidth, (height() - switchHeight) / 2, switchWidth, switchHeight};
}

double Switch::outlineRadius() const { return switchHeight / 2; }

void Switch::describeState(QAccessible::State& state) const {
  state.checkable = true;
  state.checked = on_;
}

void Switch::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF title(0, 0, titleWidth(title_), height());
  const Touch state = touch();
  drawCentred(painter, title, switchFont(),
              state == Touch::disabled ? touched(look::primaryText, state) : look::primaryText, title_);
  const QRectF track = pixelAligned(painter, outline());
  const TrackColors colors = trackColors(state);
  const double radius = track.height() / 2;
  painter.setPen(Qt::NoPen);
  painter.setBrush(mix(colors.off, colors.on, knob_.value()));
  painter.drawRoundedRect(track, radius, radius);
  const double side = track.height() - 2 * knobInset;
  const double travel = track.width() - track.height();
  const QRectF knob(track.left() + knobInset + travel * knob_.value(), track.top() + knobInset, side, side);
  painter.setBrush(knobColor(state));
  painter.drawEllipse(knob_.isMoving() ? knob : pixelAligned(painter, knob));
}

}  // namespace velicor::controls
