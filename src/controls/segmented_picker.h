#pragma once

#include <functional>
#include <optional>
#include <vector>

#include <QString>

#include "controls/control.h"

namespace velicor::controls {

// A small row of segments of equal width, one of which is selected. Arrow keys select the neighbour, Home and
// End the first and the last. As wide as it gets. Main thread.
class SegmentedPicker : public Control {
 public:
  struct Segment {
    QString title;
    int value = 0;
  };

  explicit SegmentedPicker(std::vector<Segment> segments, QWidget* parent = nullptr);

  // The user has selected another segment.
  std::function<void(int value)> onChange;

  // The selected segment's; none while the value set last is no segment's.
  std::optional<int> value() const;
  void setValue(int value);

  // Where a segment is, in points.
  QRectF segmentRect(std::size_t index) const;

  QSize sizeHint() const override;
  double outlineRadius() const override;

  QAccessible::Role accessibleRole() const override { return QAccessible::ComboBox; }
  QString accessibleValue() const override;
  std::optional<Range> accessibleRange() const override;
  void setAccessibleValue(double index) override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  int indexAt(const QPointF& point) const;
  void change(int index);
  void point(int hovered, int pressed);

  const std::vector<Segment> segments_;
  int selected_ = -1;
  int hovered_ = -1;
  int pressed_ = -1;
};

}  // namespace velicor::controls
