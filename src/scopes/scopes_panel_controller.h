#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QPoint>

#include "app/app_state.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/panel.h"
#include "platform/desktop/screen.h"

namespace velicor {

class PanelTitleStrip;
class ScopesView;

// Owns the scopes panel: a narrow window at the right edge of the screen, above the loupe, on all desktops. It never
// takes the keyboard by being shown, and is moved by any part of it that is no control. Main thread.
class ScopesPanelController : private desktop::PanelDelegate {
 public:
  // Sized for the main screen, else the first one; not shown. Without any screen it waits in its smallest size for
  // the first one that comes. When the screen that showed it goes, it is sized and placed anew. The state and the
  // desktop outlive it.
  ScopesPanelController(AppState& state, desktop::Desktop& desktop);
  ~ScopesPanelController() override;
  ScopesPanelController(const ScopesPanelController&) = delete;
  ScopesPanelController& operator=(const ScopesPanelController&) = delete;

  desktop::Panel& panel() { return *panel_; }
  ScopesView& view() { return *view_; }
  PanelTitleStrip& titleStrip() { return *titleStrip_; }

  // What the title strip's menu button opens; see PanelTitleStrip::setMenu.
  void setMenu(std::function<void(QPoint corner)> open);

 private:
  // Asks the program to end; the panel stays until it does.
  bool windowShouldClose(desktop::Panel& panel) override;

  void fill(double visibleHeight);
  void place(const DesktopRect& visible);
  void followScreens();
  std::unique_ptr<QWidget> makeContent(double visibleHeight);

  AppState& state_;
  desktop::Desktop& desktop_;
  const std::unique_ptr<desktop::Panel> panel_;
  ScopesView* view_ = nullptr;  // owned by the panel, as is the strip
  PanelTitleStrip* titleStrip_ = nullptr;
  std::function<void(QPoint corner)> openMenu_;
  std::vector<desktop::Screen> screens_;  // the last ones; empty until there are any
  Subscription screensChanged_;
};

}  // namespace velicor
