#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "capture/capture_manager.h"
#include "capture/fake_capture_service.h"
#include "support/log_recorder.h"
#include "support/manual_clock.h"

namespace velicor::test {

// A session on a scripted service, with two displays side by side and this program among the applications.
class CaptureFixture : public testing::Test {
 protected:
  CaptureFixture();
  ~CaptureFixture() override;

  // Reports a region 300 × 200 at this place of a screen, and lets everything happen that is due now.
  void report(double x, double y, const desktop::Screen& screen);

  // A session that runs on the left display.
  void startOnLeft();

  std::vector<std::string> journal() { return service->takeJournal(); }
  std::string lastError() const { return session->lastError().value_or("none"); }
  screencapture::ShareableContent contentWithoutUs() const;

  static Error broken() { return {"test", 5, "It broke"}; }

  desktop::Screen left;
  desktop::Screen right;
  std::shared_ptr<FakeCaptureService> service = std::make_shared<FakeCaptureService>();
  ManualClock clock;
  LogRecorder log;
  std::unique_ptr<CaptureManager> session = std::make_unique<CaptureManager>(service, clock);
};

}  // namespace velicor::test
