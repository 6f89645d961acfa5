// The whole frame path in one process: a real display, the real capture, the processor and the loupe.
#include <gtest/gtest.h>

#include <QImage>
#include <QTemporaryDir>

#include "app/app_state.h"
#include "diagnostics/debug_dump.h"
#include "loupe/loupe_controller.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/dispatch/clock.h"
#include "platform/screencapture/x11/service.h"
#include "platform/settings/settings.h"
#include "support/main_loop.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

class LivePathTest : public testing::Test {
 protected:
  LivePathTest() {
    qputenv("VELICOR_DUMP", folder_.filePath("scope").toUtf8());
    state_.loupe = loupe_;
    loupe_->onFrameChange = [this](const DesktopRect& frame) { state_.loupeFrameChanged(frame); };
    state_.applyRestoredSettings();
  }
  ~LivePathTest() override { qunsetenv("VELICOR_DUMP"); }

  void show() {
    loupe_->panel().orderFront();
    loupe_->onFrameChange(loupe_->panel().frame());
  }

  // The newest vectorscope; a null image before the first.
  QImage vectorscope() {
    const auto texture = state_.processor->vectorscope();
    if (!texture) return {};
    DebugDump::write(texture, queue_, "vectorscope");
    return QImage(folder_.filePath("scope-vectorscope.png"));
  }

  // Whether the vectorscope shows this spot of its 512 × 512 pixels, and not that one.
  bool traces(QPoint spot, QPoint other) {
    const QImage image = vectorscope();
    return !image.isNull() && image.pixelColor(spot).green() > 200 && image.pixelColor(other).green() == 0;
  }

  QTemporaryDir folder_;
  test::XClient painter_{test::xServer().name()};
  std::unique_ptr<screencapture::Service> service_ =
      std::move(*screencapture::makeX11Service(test::xServer().name()));
  std::unique_ptr<desktop::Desktop> desktop_ = std::move(*desktop::Desktop::open());
  settings::Settings settings_{folder_.filePath("settings.json").toStdString(), dispatch::systemClock()};
  AppState state_{{.settings = settings_,
                   .screenList = desktop_->screens(),
                   .captureService = std::move(service_),
                   .clock = dispatch::systemClock(),
                   .makeProcessor = [] { return MetalProcessor::create(); }}};
  std::shared_ptr<LoupeController> loupe_ = std::make_shared<LoupeController>(state_.processor, *desktop_);
  std::shared_ptr<gpu::CommandQueue> queue_ = state_.processor->device()->makeCommandQueue();
};

TEST_F(LivePathTest, AfterADragTheScopesBelongToTheFinalPlaceThoughNothingElseMoves) {
  // Grey is traced at the centre; red at 75 % at Cb = −0.086, Cr = 0.375.
  constexpr QPoint grey(257, 257);
  constexpr QPoint red(212, 64);
  painter_.showColour({0, 0, 1440, 900}, 0x808080);
  painter_.showColour({100, 100, 400, 400}, 0xBF0000);
  show();
  ASSERT_TRUE(test::waitUntil([&] { return traces(grey, red); }));

  const DesktopRect start = loupe_->panel().frame();
  for (int step = 1; step <= 10; ++step) {
    loupe_->applyDrag(LoupeFrameView::Zone::move, {-40.0 * step, 15.0 * step}, start);
    test::waitUntil([] { return false; }, std::chrono::milliseconds(12));
  }
  EXPECT_TRUE(test::waitUntil([&] { return traces(red, grey); }));
}

}  // namespace
}  // namespace velicor
