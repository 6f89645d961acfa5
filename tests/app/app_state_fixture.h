#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <QTemporaryDir>

#include "app/app_state.h"
#include "capture/fake_capture_service.h"
#include "platform/notifications/notification_center.h"
#include "support/log_recorder.h"
#include "support/manual_clock.h"

namespace velicor::test {

struct FakeScreens : desktop::ScreenList {
  std::vector<desktop::Screen> screens() const override { return list; }
  std::optional<desktop::Screen> mainScreen() const override { return main; }

  std::vector<desktop::Screen> list;
  std::optional<desktop::Screen> main;
};

// A state on settings in a temporary folder, a scripted capture service with two displays side by side (7 on
// the left, 8 on the right, 1000 × 800 points each) and a real processor on the main processor's device.
class AppStateFixture : public testing::Test {
 protected:
  AppStateFixture();
  ~AppStateFixture() override;

  AppState::Environment environment();

  // The state, made at the first call from the settings as they are then.
  AppState& state();

  // As a new start of the program would find it.
  AppState& restarted();

  // Captures one frame of the left display, all of one grey, and waits until its analysis is published.
  void captureFrame();

  void expectPreview(bool there) const;

  FakeScreens screens;
  std::shared_ptr<FakeCaptureService> service = std::make_shared<FakeCaptureService>();
  ManualClock clock;
  LogRecorder log;
  bool hasProcessor = true;
  int previewsAnnounced = 0;
  int scopesAnnounced = 0;
  QTemporaryDir folder;
  settings::Settings settings{(folder.path() + "/settings.json").toStdString(), clock};

 private:
  Subscription previews_;
  Subscription scopes_;
  std::unique_ptr<AppState> state_;
};

}  // namespace velicor::test
