#pragma once

#include <optional>
#include <vector>

#include <QObject>

#include "platform/desktop/screen.h"
#include "platform/desktop/screen_layout.h"
#include "platform/notifications/signal.h"

namespace velicor::desktop {

class DisplayServer;
struct ServerEvent;

// The server's monitors, live. Sizes in points follow the toolkit's scale of each monitor. Main thread.
class MonitorScreens : public ScreenList {
 public:
  explicit MonitorScreens(DisplayServer& server);

  std::vector<Screen> screens() const override { return screens_; }
  std::optional<Screen> mainScreen() const override;

  // The conversion between points and pixels that goes with screens().
  const ScreenLayout& layout() const { return layout_; }

  // After screens() has changed.
  Signal<> changed;

 private:
  void handle(const ServerEvent& event);
  void watchToolkit();
  void refreshSoon();
  void refresh();
  std::optional<DeviceRect> focusedWindow() const;

  DisplayServer& server_;
  Subscription events_;
  QObject toolkit_;  // receiver of the toolkit's signals
  std::vector<Screen> screens_;
  ScreenLayout layout_;
  bool refreshing_ = false;
};

}  // namespace velicor::desktop
