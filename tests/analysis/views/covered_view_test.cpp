#include <algorithm>

#include <gtest/gtest.h>

#include "analysis/notification_names.h"
#include "analysis/views/live_texture_view.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/panel.h"
#include "platform/desktop/window_stack.h"
#include "support/main_loop.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

using test::waitUntil;

// Counts, and draws nothing: nothing is ever under way, so every draw is one that was asked for.
struct CountingDelegate : LiveTextureView::Delegate {
  void draw(LiveTextureView& /*view*/) override { ++draws; }
  int draws = 0;
};

class CoveredViewTest : public testing::Test {
 protected:
  void SetUp() override {
    auto made = std::make_unique<LiveTextureView>(device, velicorPreviewReady);
    view = made.get();
    view->setDelegate(delegate);
    panel.setContentView(std::move(made));
    panel.orderFront();
    const auto id = static_cast<desktop::WindowId>(panel.window().winId());
    ASSERT_TRUE(waitUntil([&] {
      return delegate->draws > 0 &&
             std::ranges::count(desktop->windows().windows(), id, &desktop::StackedWindow::id) == 1;
    }));
    cover = client.showColour({590, 490, 320, 320}, 0x00ff00);
    ASSERT_TRUE(waitUntil([&] { return panel.isOccluded(); }));
    test::settle();
    delegate->draws = 0;
  }

  void post() { notifications::NotificationCenter::defaultCenter().post(velicorPreviewReady); }

  // By so much that a strip of the panel can be seen.
  void uncover() {
    client.move(cover, 620, 490);
    ASSERT_TRUE(waitUntil([&] { return !panel.isOccluded(); }));
    test::settle();
  }

  std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  test::XClient client{test::xServer().name()};
  std::shared_ptr<gpu::Device> device = gpu::systemDefaultDevice();
  std::shared_ptr<CountingDelegate> delegate = std::make_shared<CountingDelegate>();
  desktop::Panel panel{*desktop, desktop::PanelKind::bypassing, {600, 300, 100, 100}};
  LiveTextureView* view = nullptr;
  xcb_window_t cover = 0;
};

TEST_F(CoveredViewTest, drawsWhatWasAnnouncedMeanwhileOnceWhenItComesToLight) {
  EXPECT_FALSE(view->canBeSeen());
  for (int i = 0; i < 3; ++i)
    post();
  test::settle();
  EXPECT_EQ(delegate->draws, 0);
  uncover();
  EXPECT_EQ(delegate->draws, 1);
  client.move(cover, 630, 490);
  client.sync();
  post();
  EXPECT_TRUE(waitUntil([&] { return delegate->draws == 2; }));
}

TEST_F(CoveredViewTest, drawsInItsNewSizeWhenItComesToLight) {
  panel.setFrame({600, 300, 150, 100});
  ASSERT_TRUE(waitUntil([&] { return view->width() == 150; }));
  test::settle();
  EXPECT_EQ(delegate->draws, 0);
  uncover();
  EXPECT_EQ(delegate->draws, 1);
}

TEST_F(CoveredViewTest, drawsNothingWhereNothingWasMissed) {
  uncover();
  EXPECT_EQ(delegate->draws, 0);
}

}  // namespace
}  // namespace velicor
