#include "controls/segmented_picker.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QFontMetricsF>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QPainter>

#include "platform/desktop/continuous_corners.h"
#include "platform/desktop/look.h"
#include "platform/desktop/typeface.h"

namespace velicor::controls {

namespace {

constexpr int segmentPadding = 10;
constexpr double pickerRadius = 5;

QFont segmentFont(bool selected) {
  return desktop::interfaceFont(11, selected ? QFont::DemiBold : QFont::Medium);
}

}  // namespace

SegmentedPicker::SegmentedPicker(std::vector<Segment> segments, QWidget* parent)
    : Control(parent), segments_(std::move(segments)) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

std::optional<int> SegmentedPicker::value() const {
  if (selected_ < 0) return std::nullopt;
  return segments_[static_cast<std::size_t>(selected_)].value;
}

void SegmentedPicker::setValue(int value) {
  const auto found = std::ranges::find(segments_, value, &Segment::value);
  const int index = found == segments_.end() ? -1 : static_cast<int>(found - segments_.begin());
  if (std::exchange(selected_, index) == index) return;
  update();
  announceValue(*this, *this);
}

void SegmentedPicker::change(int index) {
  const int held = std::clamp(index, 0, static_cast<int>(segments_.size()) - 1);
  if (held == selected_) return;
  setValue(segments_[static_cast<std::size_t>(held)].value);
  if (onChange) onChange(*value());
}

QRectF SegmentedPicker::segmentRect(std::size_t index) const {
  const double share = double(width()) / static_cast<double>(segments_.size());
  return {share * static_cast<double>(index), 0, share, double(height())};
}

int SegmentedPicker::indexAt(const QPointF& point) const {
  for (std::size_t i = 0; i < segments_.size(); ++i) {
    const QRectF rect = segmentRect(i);
    if (point.x() >= rect.left() && point.x() < rect.right() && rect.top() <= point.y() &&
        point.y() < rect.bottom())
      return static_cast<int>(i);
  }
  return -1;
}

QSize SegmentedPicker::sizeHint() const {
  double widest = 0;
  for (const Segment& segment : segments_)
    widest = std::max(widest, QFontMetricsF(segmentFont(true)).horizontalAdvance(segment.title));
  const int each = static_cast<int>(std::ceil(widest)) + 2 * segmentPadding;
  return {each * static_cast<int>(segments_.size()), controlHeight};
}

double SegmentedPicker::outlineRadius() const { return pickerRadius; }

QString SegmentedPicker::accessibleValue() const {
  return selected_ < 0 ? QString() : segments_[static_cast<std::size_t>(selected_)].title;
}

std::optional<Accessible::Range> SegmentedPicker::accessibleRange() const {
  return Range{double(selected_), 0, static_cast<double>(segments_.size()) - 1, 1};
}

void SegmentedPicker::setAccessibleValue(double index) { change(static_cast<int>(std::lround(index))); }

void SegmentedPicker::point(int hovered, int pressed) {
  hovered_ = hovered;
  pressed_ = pressed;
  update();
}

bool SegmentedPicker::event(QEvent* event) {
  if (event->type() == QEvent::HoverMove || event->type() == QEvent::HoverEnter)
    point(indexAt(static_cast<QHoverEvent*>(event)->position()), pressed_);
  if (event->type() == QEvent::HoverLeave) point(-1, pressed_);
  return Control::event(event);
}

void SegmentedPicker::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  point(hovered_, indexAt(event->position()));
}

void SegmentedPicker::mouseMoveEvent(QMouseEvent* event) { point(indexAt(event->position()), pressed_); }

void SegmentedPicker::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const int pressed = std::exchange(pressed_, -1);
  update();
  if (pressed >= 0 && indexAt(event->position()) == pressed) change(pressed);
}

void SegmentedPicker::hideEvent(QHideEvent* event) {
  point(-1, -1);
  Control::hideEvent(event);
}

void SegmentedPicker::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_PageUp:
      return change(selected_ - 1);
    case Qt::Key_Right:
    case Qt::Key_Down:
    case Qt::Key_PageDown:
      return change(selected_ + 1);
    case Qt::Key_Home:
      return change(0);
    case Qt::Key_End:
      return change(static_cast<int>(segments_.size()) - 1);
    default:
      Control::keyPressEvent(event);
  }
}

void SegmentedPicker::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const auto dimmed = [disabled = !isEnabled()](const QColor& color) {
    return disabled ? touched(color, Touch::disabled) : color;
  };
  painter.fillPath(desktop::continuousCorners(pixelAligned(painter, rect()), pickerRadius), dimmed(look::hairline));
  for (std::size_t i = 0; i < segments_.size(); ++i) {
    const int index = static_cast<int>(i);
    const bool selected = index == selected_;
    const bool lit = selected || index == hovered_ || index == pressed_;
    const QRectF segment = pixelAligned(painter, segmentRect(i));
    if (selected)
      painter.fillPath(desktop::continuousCorners(segment, pickerRadius), dimmed(look::controlTrackLit));
    if (index == pressed_ && !selected)
      painter.fillPath(desktop::continuousCorners(segment, pickerRadius), look::hairline);
    const QColor text = lit ? look::primaryText : look::secondaryText;
    drawCentred(painter, segment, segmentFont(selected), dimmed(text), segments_[i].title);
  }
}

}  // namespace velicor::controls
