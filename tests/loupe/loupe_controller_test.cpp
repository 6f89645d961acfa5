#include "loupe/loupe_controller.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include <gtest/gtest.h>
#include <QApplication>
#include <QImage>

#include "analysis/notification_names.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/pointer.h"
#include "platform/desktop/window_stack.h"
#include "support/announce_monitors.h"
#include "support/main_loop.h"
#include "support/robot.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

using desktop::Cursor;
using test::waitUntil;
using test::xServer;
using Zone = LoupeFrameView::Zone;

// A window of another program that counts the clicks it gets.
class ClickTarget {
 public:
  ClickTarget(test::XClient& client, const DeviceRect& place) : client_(client) {
    window_ = client_.makeWindow(place, {.managed = true});
    const std::uint32_t mask = XCB_EVENT_MASK_BUTTON_PRESS;
    xcb_change_window_attributes(client_.raw(), window_, XCB_CW_EVENT_MASK, &mask);
    client_.map(window_);
    client_.sync();
  }

  int clicks() {
    while (xcb_generic_event_t* event = xcb_poll_for_event(client_.raw())) {
      if ((event->response_type & 0x7f) == XCB_BUTTON_PRESS) ++clicks_;
      std::free(event);
    }
    return clicks_;
  }

  xcb_window_t window() const { return window_; }

 private:
  test::XClient& client_;
  xcb_window_t window_ = 0;
  int clicks_ = 0;
};

class LoupeTest : public testing::Test {
 protected:
  void SetUp() override {
    robot.moveTo({5, 5});
    loupe.panel().orderFront();
    loupe.updateMousePassthrough();
    loupe.onFrameChange = [this](DesktopRect frame) { reported.push_back(frame); };
    ASSERT_TRUE(waitUntil([&] { return isShown(); }));
  }

  bool isShown() {
    const auto id = static_cast<desktop::WindowId>(loupe.panel().window().winId());
    return std::ranges::count(desktop->windows().windows(), id, &desktop::StackedWindow::id) == 1;
  }

  // Whether the loupe is the window that stands above this one.
  bool isAbove(xcb_window_t other) {
    const desktop::Stack& stack = desktop->windows().windows();
    return stack.size() >= 2 && stack.back().own &&
           std::ranges::count(stack, other, &desktop::StackedWindow::id) == 1;
  }

  // A pixel of the loupe by its distance from the loupe's bottom-left corner.
  DevicePoint at(int x, int y) {
    const DeviceRect rect = loupe.panel().deviceFrame();
    return {rect.x + x, rect.bottom() - 1 - y};
  }

  // Puts the mouse there and waits until the loupe has decided about it.
  void hover(DevicePoint place, bool taken) {
    robot.moveTo(place);
    ASSERT_TRUE(waitUntil([&] { return loupe.panel().ignoresMouseEvents() != taken; }));
    test::settle();
  }

  void drag(DevicePoint from, DevicePoint to) {
    hover(from, true);
    robot.drag(from, to);
    ASSERT_TRUE(waitUntil([&] { return !loupe.frameView().isInteracting() && !reported.empty(); }));
    test::settle();
  }

  xcb_window_t focus() {
    auto* reply = xcb_get_input_focus_reply(client.raw(), xcb_get_input_focus(client.raw()), nullptr);
    const xcb_window_t window = reply->focus;
    std::free(reply);
    return window;
  }

  std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  test::XClient client{xServer().name()};
  test::Robot robot{xServer().name()};
  LoupeController loupe{nullptr, *desktop};
  std::vector<DesktopRect> reported;
};

TEST_F(LoupeTest, startsInTheMiddleOfTheScreen) {
  EXPECT_EQ(loupe.panel().frame(), (DesktopRect{632.5, 362.5, 175, 175}));
  EXPECT_EQ(loupe.panel().level(), 3);
  EXPECT_EQ(loupe.metalView(), nullptr);
}

TEST_F(LoupeTest, followsTheMouseToThePixel) {
  drag(at(158, 160), {1200, 100});
  const DesktopRect frame = loupe.panel().frame();
  EXPECT_EQ(frame.width, 175);
  EXPECT_EQ(at(158, 160), (DevicePoint{1200, 100}));
  EXPECT_EQ(reported.back(), frame);
}

TEST_F(LoupeTest, mayLeaveTheScreen) {
  drag(at(160, 160), {0, 899});
  EXPECT_LT(loupe.panel().frame().minX(), 0);
  EXPECT_LT(loupe.panel().frame().minY(), 0);
}

struct Grip {
  const char* name;
  int x;
  int y;
  DesktopRect change;  // of the frame, when dragged 30 points right and 20 up
};

class LoupeGrips : public LoupeTest, public testing::WithParamInterface<Grip> {};

TEST_P(LoupeGrips, dragsItsOwnEdges) {
  const DesktopRect before = loupe.panel().frame();
  const Grip& grip = GetParam();
  const DevicePoint from = at(grip.x, grip.y);
  drag(from, {from.x + 30, from.y - 20});
  const DesktopRect after = loupe.panel().frame();
  EXPECT_EQ((DesktopRect{after.x - before.x, after.y - before.y, after.width - before.width,
                         after.height - before.height}),
            grip.change);
}

INSTANTIATE_TEST_SUITE_P(
    All, LoupeGrips,
    testing::Values(Grip{"left", 4, 88, {30, 0, -30, 0}}, Grip{"right", 170, 88, {0, 0, 30, 0}},
                    Grip{"top", 88, 170, {0, 0, 0, 20}}, Grip{"bottom", 88, 4, {0, 20, 0, -20}},
                    Grip{"topLeft", 4, 170, {30, 0, -30, 20}}, Grip{"topRight", 172, 172, {0, 0, 30, 20}},
                    Grip{"bottomLeft", 4, 4, {30, 20, -30, -20}},
                    Grip{"bottomRight", 170, 4, {0, 20, 30, -20}}),
    [](const auto& grip) { return grip.param.name; });

TEST_F(LoupeTest, clicksInsideReachTheApplicationBelow) {
  ClickTarget below(client, {500, 200, 500, 500});
  ASSERT_TRUE(waitUntil([&] { return isAbove(below.window()); }));
  hover(at(88, 88), false);
  robot.click(at(88, 88));
  EXPECT_TRUE(waitUntil([&] { return below.clicks() == 1; }));

  hover(at(20, 88), true);
  robot.click(at(20, 88));
  hover(at(30, 88), false);
  robot.click(at(30, 88));
  EXPECT_TRUE(waitUntil([&] { return below.clicks() == 2; }));
}

TEST_F(LoupeTest, aLockedLoupeTakesNothingButItsChip) {
  ClickTarget below(client, {500, 200, 500, 500});
  ASSERT_TRUE(waitUntil([&] { return isAbove(below.window()); }));
  loupe.frameView().isLocked = true;
  loupe.updateMousePassthrough();
  int toggles = 0;
  loupe.onPanelToggle = [&] { ++toggles; };
  hover(at(142, 162), true);
  EXPECT_EQ(loupe.panel().cursor(), Cursor::pointingHand);
  robot.click(at(142, 162));
  EXPECT_TRUE(waitUntil([&] { return toggles == 1; }));
  hover(at(4, 88), false);
  robot.drag(at(4, 88), at(60, 88));
  EXPECT_TRUE(waitUntil([&] { return below.clicks() == 1; }));
  EXPECT_EQ(loupe.panel().frame(), (DesktopRect{632.5, 362.5, 175, 175}));
  EXPECT_TRUE(reported.empty());
}

TEST_F(LoupeTest, thePanelChipCountsOnlyWhenReleasedOverIt) {
  int toggles = 0;
  loupe.onPanelToggle = [&] { ++toggles; };
  hover(at(142, 162), true);
  robot.press();
  ASSERT_TRUE(waitUntil([&] { return loupe.frameView().pressActive(); }));
  robot.moveTo(at(100, 162));
  robot.release();
  ASSERT_TRUE(waitUntil([&] { return !loupe.frameView().pressActive(); }));
  EXPECT_EQ(toggles, 0);
  hover(at(143, 162), true);
  robot.click(at(142, 162));
  EXPECT_TRUE(waitUntil([&] { return toggles == 1; }));
  EXPECT_TRUE(reported.empty());
}

TEST_F(LoupeTest, hoveringTakesTheKeyboardAndLeavingGivesItBack) {
  const test::WindowManager manager(xServer());
  const xcb_window_t other = client.showPattern({50, 50, 300, 200}, {1}, {.managed = true});
  ASSERT_TRUE(waitUntil([&] { return focus() == other; }));
  const auto own = static_cast<xcb_window_t>(loupe.panel().window().winId());
  for (int round = 0; round < 2; ++round) {
    hover(at(4, 88 + round), true);
    EXPECT_TRUE(waitUntil([&] { return focus() == own; }));
    EXPECT_EQ(loupe.panel().cursor(), Cursor::resizeLeftRight);
    hover(at(88, 88 + round), false);
    EXPECT_TRUE(waitUntil([&] { return focus() == other; }));
    EXPECT_EQ(loupe.panel().cursor(), Cursor::arrow);
  }
}

TEST_F(LoupeTest, backAtTheStartADragHasNoDisplacement) {
  std::vector<DesktopSize> steps;
  loupe.frameView().onDrag = [&](Zone, DesktopSize delta, DesktopRect frame) {
    steps.push_back(delta);
    EXPECT_EQ(frame, (DesktopRect{632.5, 362.5, 175, 175}));
  };
  hover(at(4, 88), true);
  const DevicePoint grip = at(4, 88);
  robot.press();
  robot.moveTo({grip.x - 50, grip.y});
  ASSERT_TRUE(waitUntil([&] { return !steps.empty() && steps.back() == DesktopSize{-50, 0}; }));
  robot.moveTo(grip);
  EXPECT_TRUE(waitUntil([&] { return steps.back() == DesktopSize{0, 0}; }));
  robot.release();
  EXPECT_TRUE(waitUntil([&] { return !loupe.frameView().isInteracting(); }));
}

// A second monitor to the right of the server's own.
class SideMonitor {
 public:
  explicit SideMonitor(test::XClient& client) : client_(client) {
    client_.defineMonitor("side", {1440, 0, 720, 900}, false);
    test::announceMonitors(client_, true);
  }
  ~SideMonitor() {
    client_.deleteMonitor("side");
    test::announceMonitors(client_, false);
  }
  SideMonitor(const SideMonitor&) = delete;
  SideMonitor& operator=(const SideMonitor&) = delete;

 private:
  test::XClient& client_;
};

TEST_F(LoupeTest, returnsFromAScreenThatGoesAndTellsOfEveryChange) {
  const auto screens = [&] { return desktop->screens().screens().size(); };
  std::optional<SideMonitor> side(client);
  ASSERT_TRUE(waitUntil([&] { return screens() == 2; }));
  test::settle();
  EXPECT_EQ(reported, std::vector{(DesktopRect{632.5, 362.5, 175, 175})});

  loupe.panel().setFrame({1600, 100, 200, 100});
  test::settle();
  reported.clear();
  side.reset();
  ASSERT_TRUE(waitUntil([&] { return screens() == 1; }));
  test::settle();
  EXPECT_EQ(reported, std::vector{(DesktopRect{620, 400, 200, 100})});
  EXPECT_EQ(loupe.panel().deviceFrame(), (DeviceRect{620, 400, 200, 100}));
}

TEST_F(LoupeTest, whereItWasDraggedOffTheScreensAChangeOfThemLeavesIt) {
  const DesktopRect off{100, 2000, 175, 175};
  loupe.panel().setFrame(off);
  {
    const SideMonitor side(client);
    ASSERT_TRUE(waitUntil([&] { return desktop->screens().screens().size() == 2; }));
  }
  ASSERT_TRUE(waitUntil([&] { return desktop->screens().screens().size() == 1; }));
  test::settle();
  EXPECT_EQ(loupe.panel().frame(), off);
  EXPECT_EQ(reported.back(), off);
}

TEST_F(LoupeTest, aDragThatLosesItsReleaseIsOver) {
  const auto own = static_cast<xcb_window_t>(loupe.panel().window().winId());
  hover(at(4, 88), true);
  robot.press();
  ASSERT_TRUE(waitUntil([&] { return loupe.frameView().isInteracting(); }));
  client.unmap(own);
  client.sync();
  robot.release();
  client.map(own);
  client.sync();
  robot.moveTo(at(5, 80));
  EXPECT_TRUE(waitUntil([&] { return !loupe.frameView().pressActive(); }));
  EXPECT_FALSE(loupe.frameView().isInteracting());

  robot.press();
  ASSERT_TRUE(waitUntil([&] { return loupe.frameView().isInteracting(); }));
  loupe.panel().orderOut();
  EXPECT_FALSE(loupe.frameView().pressActive());
  EXPECT_FALSE(loupe.frameView().isInteracting());
  robot.release();
}

TEST(LoupeWithProcessor, paintsTheCapturedFrameOnlyWithoutACompositor) {
  const std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  const std::shared_ptr<MetalProcessor> processor = MetalProcessor::create();
  processor->mode = MetalProcessor::Mode::original;
  processor->onPreview = [] { notifications::NotificationCenter::defaultCenter().post(velicorPreviewReady); };
  LoupeController loupe(processor, *desktop);
  loupe.metalView()->hide();
  loupe.panel().orderFront();
  ASSERT_NE(loupe.capturedFrameView(), nullptr);

  auto frame = std::make_shared<PixelBuffer>(175, 175);
  std::fill_n(frame->bytes(), frame->bytesPerRow() * 175, std::byte{200});
  processor->ingest(frame);
  const auto middle = [&] { return loupe.panel().window().grab().toImage().pixel(88, 88); };
  EXPECT_TRUE(waitUntil([&] { return middle() == qRgb(200, 200, 200); }));
  {
    const test::CompositingManager manager(xServer());
    EXPECT_TRUE(waitUntil([&] { return loupe.capturedFrameView() == nullptr; }));
    EXPECT_EQ(qAlpha(middle()), 0);
  }
  EXPECT_TRUE(
      waitUntil([&] { return loupe.capturedFrameView() != nullptr && middle() == qRgb(200, 200, 200); }));
}

// Over the screen's edge, without a compositor: every captured pixel lies where it was taken from.
TEST(LoupeWithProcessor, paintsTheCapturedFrameOnItsPartOfTheScreen) {
  const std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  const std::shared_ptr<MetalProcessor> processor = MetalProcessor::create();
  processor->mode = MetalProcessor::Mode::original;
  processor->onPreview = [] { notifications::NotificationCenter::defaultCenter().post(velicorPreviewReady); };
  LoupeController loupe(processor, *desktop);
  loupe.metalView()->hide();
  loupe.frameView().hide();
  loupe.panel().orderFront();

  constexpr int visible = 100;
  auto frame = std::make_shared<PixelBuffer>(visible, 175);
  for (std::size_t row = 0; row < 175; ++row) {
    for (std::size_t column = 0; column < visible; ++column) {
      std::byte* pixel = frame->bytes() + row * frame->bytesPerRow() + column * 4;
      std::fill_n(pixel, 4, std::byte(column + 50));
    }
  }
  const auto grey = [](int column) { return qRgb(column + 50, column + 50, column + 50); };
  for (const auto& [place, first] :
       {std::pair(DesktopRect{1340, 300, 175, 175}, 0), std::pair(DesktopRect{-75, 300, 175, 175}, 75)}) {
    loupe.panel().setFrame(place);
    processor->ingest(frame);
    const auto picture = [&] { return loupe.panel().window().grab().toImage(); };
    EXPECT_TRUE(waitUntil([&] {
      return picture().pixel(first, 0) == grey(0) && picture().pixel(first + 99, 174) == grey(99);
    }));
    const QImage last = picture();
    EXPECT_EQ(last.pixel(first + 31, 88), grey(31));
    EXPECT_EQ(qAlpha(last.pixel(first == 0 ? 100 : 74, 88)), 0);
  }
}

}  // namespace
}  // namespace velicor
