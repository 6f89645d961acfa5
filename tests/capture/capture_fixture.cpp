#include "capture/capture_fixture.h"

#include <unistd.h>

#include "support/main_loop.h"

namespace velicor::test {

CaptureFixture::CaptureFixture() {
  left.displayID = 7;
  left.frame = {0, 0, 1000, 800};
  right.displayID = 8;
  right.frame = {1000, 0, 1000, 800};
  right.backingScaleFactor = 2;
  service->content = {{{7}, {8}}, {{1, "example.other"}, {getpid(), ""}}};
}

CaptureFixture::~CaptureFixture() {
  session.reset();
  for (Gate* gate : {&service->queryGate, &service->startGate, &service->stopGate, &service->updateGate}) {
    gate->open();
  }
  clock.advance(std::chrono::minutes(1));
}

void CaptureFixture::report(double x, double y, const desktop::Screen& screen) {
  session->updateRegion({x, y, 300, 200}, screen);
  settle();
}

void CaptureFixture::startOnLeft() {
  report(100, 100, left);
  ASSERT_TRUE(session->isRunning());
  journal();
}

screencapture::ShareableContent CaptureFixture::contentWithoutUs() const {
  return {service->content.displays, {service->content.applications.front()}};
}

}  // namespace velicor::test
