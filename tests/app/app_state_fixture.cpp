#include "app/app_state_fixture.h"

#include <algorithm>

#include <unistd.h>

#include "analysis/notification_names.h"
#include "platform/gpu/native/native_device.h"
#include "support/main_loop.h"

namespace velicor::test {

AppStateFixture::AppStateFixture() {
  desktop::Screen left;
  left.displayID = 7;
  left.frame = {0, 0, 1000, 800};
  desktop::Screen right = left;
  right.displayID = 8;
  right.frame.x = 1000;
  screens.list = {left, right};
  service->content = {{{7}, {8}}, {{getpid(), ""}}};
  auto& center = notifications::NotificationCenter::defaultCenter();
  previews_ = center.addObserver(velicorPreviewReady, [this] { ++previewsAnnounced; });
  scopes_ = center.addObserver(velicorScopesReady, [this] { ++scopesAnnounced; });
}

AppStateFixture::~AppStateFixture() {
  state_.reset();
  clock.advance(std::chrono::minutes(1));
}

AppState::Environment AppStateFixture::environment() {
  return {settings, screens, service, clock,
          [this] { return hasProcessor ? MetalProcessor::create(gpu::makeNativeDevice()) : nullptr; }};
}

AppState& AppStateFixture::state() {
  if (!state_) state_ = std::make_unique<AppState>(environment());
  return *state_;
}

AppState& AppStateFixture::restarted() {
  state_.reset();
  return state();
}

void AppStateFixture::captureFrame() {
  if (service->streams.empty()) {
    state().loupeFrameChanged({100, 100, 40, 30});
    settle();
  }
  const auto frame = std::make_shared<PixelBuffer>(40, 30);
  std::fill_n(frame->bytes(), frame->bytesPerRow() * 30, std::byte{0x80});
  const int before = previewsAnnounced;
  service->lastStream().deliver({true, {{screencapture::FrameStatus::complete}}, frame});
  if (hasProcessor) {
    ASSERT_TRUE(waitUntil([&] { return previewsAnnounced > before; }));
  }
}

void AppStateFixture::expectPreview(bool there) const {
  EXPECT_TRUE(waitUntil([&] { return (state_->processor->preview() != nullptr) == there; }));
}

}  // namespace velicor::test
