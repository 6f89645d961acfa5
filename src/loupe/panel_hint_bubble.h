#pragma once

#include <optional>

#include <QPainterPath>
#include <QWidget>

#include "platform/base/geometry.h"

namespace velicor {

// The speech bubble that tells where the hidden scopes panel is brought back. Main thread.
class PanelHintBubble : public QWidget {
 public:
  // The bubble's pointer: flat at the top, its tip in the middle of the bottom.
  struct Triangle {
    static QPainterPath path(const QRectF& rect);
  };

  explicit PanelHintBubble(QWidget* parent = nullptr);

  // What the text needs, in whole points.
  QSize sizeHint() const override;

  // Ground and pointer, in the view.
  QPainterPath outline() const;

  // The bottom-left corner for a bubble of this size: centred above the chip with the tip 8 points from it, kept 4
  // points inside the visible frame at the sides, and below the chip where there is no room above.
  static DesktopPoint place(const DesktopRect& chip, DesktopSize size,
                            const std::optional<DesktopRect>& visibleFrame);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QRectF ground() const;
};

}  // namespace velicor
