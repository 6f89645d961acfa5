#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "controls/motion.h"
#include "platform/base/geometry.h"
#include "platform/desktop/panel.h"
#include "platform/notifications/signal.h"

namespace velicor {

class PanelHintBubble;

// The hint bubble on the screen: a window that the mouse passes by, above the loupe and the scopes panel. It fades in
// when it is made and is ordered out when it goes. Without a compositing manager there is no alpha: then it is there
// at once, cut out of the screen in its shape and without a shadow. Main thread.
class PanelHint {
 public:
  // By a chip of the desktop, inside the visible frame of a screen; none where there is no screen.
  PanelHint(desktop::Desktop& desktop, const DesktopRect& chip, const std::optional<DesktopRect>& visibleFrame);
  ~PanelHint();
  PanelHint(const PanelHint&) = delete;
  PanelHint& operator=(const PanelHint&) = delete;

  // Orders the window out when it has faded, then calls the handler, which may destroy this object.
  void fadeOut(std::function<void()> then);

  // Where the bubble is. The window around it has room for the shadow.
  const DesktopRect& frame() const { return frame_; }
  desktop::Panel& panel() { return *panel_; }
  double alphaValue() const { return alpha_.value(); }

 private:
  class Canvas;

  void alphaChanged();
  void applyShape();

  desktop::Desktop& desktop_;
  DesktopRect frame_;
  std::unique_ptr<desktop::Panel> panel_;
  Canvas* canvas_ = nullptr;  // owned by the panel
  controls::Motion alpha_;
  std::function<void()> faded_;
  Subscription compositorChanged_;
};

}  // namespace velicor
