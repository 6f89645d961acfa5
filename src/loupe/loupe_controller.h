#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "analysis/metal_processor.h"
#include "analysis/views/metal_texture_view.h"
#include "loupe/keyable_panel.h"
#include "loupe/loupe_frame_view.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/screen.h"
#include "platform/dispatch/clock.h"

class QWidget;

namespace velicor {

class CapturedFrameLayer;
class PanelHint;

// Owns the loupe: a transparent panel above all other programs that shows the live preview under its frame.
// Applies the frame's drags to the panel, reports every new frame, and decides from moment to moment whether
// the panel takes the mouse or lets it through to what lies below. Main thread.
class LoupeController : private desktop::PanelDelegate {
 public:
  // Centred on the main screen, not shown. Without a processor the loupe is a frame without a preview.
  // Without any screen it waits where the primary one would be, and is centred on the first one that comes.
  // So it is, in its size, when the screen that showed it goes.
  // The desktop and the clock, which the hint goes by, outlive it.
  LoupeController(std::shared_ptr<MetalProcessor> processor, desktop::Desktop& desktop,
                  dispatch::Clock& clock = dispatch::systemClock());
  ~LoupeController() override;
  LoupeController(const LoupeController&) = delete;
  LoupeController& operator=(const LoupeController&) = delete;

  // The panel's frame after every move and resize, whatever caused it, and after every change of the screens:
  // the same frame may then be other pixels.
  std::function<void(DesktopRect frame)> onFrameChange;

  // A click on the frame's panel chip.
  std::function<void()> onPanelToggle;

  KeyablePanel& panel() { return *panel_; }
  LoupeFrameView& frameView() { return *frameView_; }

  // The preview; absent without a processor.
  LiveTextureView* metalView() { return metalView_; }

  // The picture below it; absent while a compositing manager lets the desktop shine through.
  LiveTextureView* capturedFrameView();

  // One step of a drag (displacement with y up, from the frame at its start). The panel may leave the screen.
  void applyDrag(LoupeFrameView::Zone zone, DesktopSize delta, const DesktopRect& startFrame);

  // Says for three seconds, in a bubble by the panel chip, that the chip brings the scopes panel back. A new one
  // replaces the one before.
  void showPanelHint();
  void hidePanelHint();
  PanelHint* hintPanel() { return hintPanel_.get(); }

  // To be called when something else than the mouse changed what the answer depends on.
  void updateMousePassthrough();

  // Directs the keyboard at the loupe for more than the time that the mouse is on it: until the user goes back, by
  // leaveKeyboard() or a click elsewhere, or takes the mouse to the loupe and away again. Nothing while it is hidden.
  void takeKeyboard();

  // Gives it back to whichever window had it.
  void leaveKeyboard();

 private:
  void windowDidMove(desktop::Panel& panel) override;
  void windowDidResize(desktop::Panel& panel) override;
  void reportFrame();
  void addPreview();
  void addFrameView();
  void watchMouse();
  void watchCompositor();
  void followCompositor();
  void watchScreens();
  void followScreens();
  std::optional<DesktopRect> visibleFrame() const;
  void enterBand(DesktopPoint mouse);
  void leaveBand();
  bool takesMouseAt(DesktopPoint mouse) const;

  const std::shared_ptr<MetalProcessor> processor_;
  desktop::Desktop& desktop_;
  dispatch::Clock& clock_;
  const std::unique_ptr<KeyablePanel> panel_;
  QWidget* const container_;  // owned by the panel, as are the views in it
  LoupeFrameView* frameView_ = nullptr;
  LiveTextureView* metalView_ = nullptr;
  std::shared_ptr<MetalTextureView::Renderer> renderer_;
  std::unique_ptr<CapturedFrameLayer> capturedFrame_;
  std::shared_ptr<PanelHint> hintPanel_;  // shared with nobody: what its timer finds it by
  std::vector<Subscription> mouseMonitors_;
  Subscription pressesElsewhere_;
  Subscription compositorChanged_;
  Subscription screensChanged_;
  std::vector<desktop::Screen> screens_;  // the last ones; empty until there are any
  bool cursorInBand_ = false;
};

}  // namespace velicor
