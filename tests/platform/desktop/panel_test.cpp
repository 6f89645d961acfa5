#include "platform/desktop/panel.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <QWidget>

#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/pointer.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/desktop/window_stack.h"
#include "support/announce_monitors.h"
#include "support/main_loop.h"
#include "support/robot.h"
#include "support/x11_main.h"
#include "support/x_client.h"
#include "support/xfce_manager.h"

namespace velicor::desktop {
namespace {

using test::waitUntil;
using test::xServer;

class KeyPanel : public Panel {
 public:
  using Panel::Panel;
  bool canBecomeKey() const override { return true; }
};

struct CountingDelegate : PanelDelegate {
  void windowDidMove(Panel&) override { ++moves; }
  void windowDidResize(Panel&) override { ++resizes; }
  int moves = 0;
  int resizes = 0;
};

class PanelTest : public testing::Test {
 protected:
  xcb_window_t idOf(const Panel& panel) const { return static_cast<xcb_window_t>(panel.window().winId()); }

  DeviceRect serverRect(xcb_window_t window) {
    auto* reply = xcb_get_geometry_reply(client.raw(), xcb_get_geometry(client.raw(), window), nullptr);
    const DeviceRect rect =
        reply ? DeviceRect{reply->x, reply->y, reply->width, reply->height} : DeviceRect{};
    std::free(reply);
    return rect;
  }

  // Rectangles of the input shape: one for an untouched window, none where clicks fall through.
  std::uint32_t inputRectangles(xcb_window_t window) {
    auto* reply = xcb_shape_get_rectangles_reply(
        client.raw(), xcb_shape_get_rectangles(client.raw(), window, XCB_SHAPE_SK_INPUT), nullptr);
    const std::uint32_t count = reply ? reply->rectangles_len : 99;
    std::free(reply);
    return count;
  }

  xcb_window_t focus() {
    auto* reply = xcb_get_input_focus_reply(client.raw(), xcb_get_input_focus(client.raw()), nullptr);
    const xcb_window_t window = reply->focus;
    std::free(reply);
    return window;
  }

  bool shown(const Panel& panel) {
    return waitUntil([&] {
      return std::ranges::count(desktop->windows().windows(), idOf(panel), &StackedWindow::id) == 1;
    });
  }

  // The window's parent, and its children from the bottom to the top.
  std::pair<xcb_window_t, std::vector<xcb_window_t>> family(xcb_window_t window) {
    auto* tree = xcb_query_tree_reply(client.raw(), xcb_query_tree(client.raw(), window), nullptr);
    const xcb_window_t* children = xcb_query_tree_children(tree);
    std::pair result{tree->parent,
                     std::vector(children, children + xcb_query_tree_children_length(tree))};
    std::free(tree);
    return result;
  }

  // Whether the panel is above the window, frame and all, as the server has it.
  bool isAbove(const Panel& panel, xcb_window_t window) {
    while (family(window).first != client.root())
      window = family(window).first;
    const std::vector<xcb_window_t> stack = family(client.root()).second;
    return std::ranges::find(stack, window) < std::ranges::find(stack, idOf(panel));
  }

  // Until the manager, which takes one thing after the other, has done what it was asked before this.
  bool managerCatchesUp() {
    const xcb_window_t probe = client.makeWindow({0, 0, 10, 10}, {.managed = true});
    xcb_client_message_event_t question{};
    question.response_type = XCB_CLIENT_MESSAGE;
    question.format = 32;
    question.window = probe;
    question.type = client.atom("_NET_REQUEST_FRAME_EXTENTS");
    xcb_send_event(client.raw(), 0, client.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&question));
    const bool answered = waitUntil([&] {
      auto* answer =
          xcb_get_property_reply(client.raw(),
                                 xcb_get_property(client.raw(), 0, probe, client.atom("_NET_FRAME_EXTENTS"),
                                                  XCB_ATOM_CARDINAL, 0, 4),
                                 nullptr);
      const bool present = answer && answer->value_len == 4;
      std::free(answer);
      return present;
    });
    client.destroy(probe);
    return answered;
  }

  std::unique_ptr<Desktop> desktop = std::move(*Desktop::open());
  test::XClient client{xServer().name()};
  test::Robot robot{xServer().name()};
};

TEST_F(PanelTest, standsWhereItWasPutToThePixel) {
  Panel panel(*desktop, PanelKind::bypassing, {632.5, 362.5, 175, 175});
  panel.orderFront();
  ASSERT_TRUE(shown(panel));
  EXPECT_EQ(serverRect(idOf(panel)), (DeviceRect{633, 363, 175, 175}));
  EXPECT_EQ(panel.frame(), (DesktopRect{632.5, 362.5, 175, 175}));

  CountingDelegate delegate;
  panel.setDelegate(&delegate);
  panel.setFrame({-40.25, 10, 90, 80});
  EXPECT_TRUE(waitUntil([&] { return serverRect(idOf(panel)) == DeviceRect{-40, 810, 90, 80}; }));
  test::settle();
  EXPECT_EQ(panel.frame(), (DesktopRect{-40.25, 10, 90, 80}));
  EXPECT_EQ(delegate.moves, 1);
  EXPECT_EQ(delegate.resizes, 1);

  client.move(idOf(panel), 300, 200);  // others move it too
  client.sync();
  EXPECT_TRUE(waitUntil([&] { return delegate.moves == 2; }));
  EXPECT_EQ(panel.frame(), (DesktopRect{300, 620, 90, 80}));
  EXPECT_EQ(delegate.resizes, 1);
}

TEST_F(PanelTest, clickThroughSurvivesEveryMapAndEndsWithoutATrace) {
  Panel panel(*desktop, PanelKind::bypassing, {100, 100, 100, 100});
  panel.setIgnoresMouseEvents(true);
  for (int round = 0; round < 2; ++round) {
    panel.orderFront();
    ASSERT_TRUE(shown(panel));
    EXPECT_EQ(inputRectangles(idOf(panel)), 0U);
    panel.orderOut();
  }
  panel.orderFront();
  panel.setIgnoresMouseEvents(false);
  panel.setFrame({100, 100, 300, 250});
  ASSERT_TRUE(shown(panel));
  EXPECT_EQ(inputRectangles(idOf(panel)), 1U);
}

TEST_F(PanelTest, givesTheKeyboardBackWhenItGoes) {
  const test::WindowManager manager(xServer());
  const xcb_window_t other = client.showPattern({50, 50, 300, 200}, {1}, {.managed = true});
  client.sync();
  ASSERT_TRUE(waitUntil([&] { return focus() == other; }));
  KeyPanel panel(*desktop, PanelKind::bypassing, {600, 300, 100, 100});
  panel.orderFront();
  ASSERT_TRUE(shown(panel));
  EXPECT_EQ(focus(), other);
  panel.makeKey();
  ASSERT_TRUE(waitUntil([&] { return focus() == idOf(panel) && panel.window().isActiveWindow(); }));
  EXPECT_TRUE(panel.isKey());
  panel.orderOut();
  EXPECT_TRUE(waitUntil([&] { return focus() == other; }));
}

TEST_F(PanelTest, withNobodyToGiveItToTheKeyboardGoesWhereThePointerIs) {
  const auto give = [&](xcb_window_t window) {
    xcb_set_input_focus(client.raw(), XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
    client.sync();
  };
  KeyPanel panel(*desktop, PanelKind::bypassing, {600, 300, 100, 100});
  panel.orderFront();
  ASSERT_TRUE(shown(panel));
  const auto takeIt = [&] {
    panel.makeKey();
    return waitUntil([&] { return focus() == idOf(panel); });
  };
  give(XCB_NONE);
  ASSERT_TRUE(takeIt());
  panel.resignKey();
  EXPECT_TRUE(waitUntil([&] { return focus() == XCB_INPUT_FOCUS_POINTER_ROOT; }));

  const xcb_window_t other = client.showColour({50, 50, 300, 200}, 0x00ff00);
  give(other);
  ASSERT_TRUE(takeIt());
  client.unmap(other);
  client.sync();
  panel.orderOut();
  EXPECT_TRUE(waitUntil([&] { return focus() == XCB_INPUT_FOCUS_POINTER_ROOT; }));
}

TEST_F(PanelTest, staysAboveAFullScreenWindowThatHasTheKeyboard) {
  const DeviceRect whole{0, 0, 1440, 900};
  for (const char* name : {"openbox", "i3"}) {
    SCOPED_TRACE(name);
    const test::WindowManager manager(xServer(), name == std::string("i3")
                                                     ? std::vector<std::string>{name, "-c", "/dev/null"}
                                                     : std::vector<std::string>{name, "--sm-disable"});
    Panel low(*desktop, PanelKind::bypassing, {600, 300, 100, 100});
    low.setLevel(3);
    low.orderFront();
    KeyPanel high(*desktop, PanelKind::managed, {550, 250, 100, 100});
    high.setLevel(4);
    high.orderFront();
    ASSERT_TRUE(waitUntil([&] { return toolkit::isViewable(idOf(low)) && toolkit::isViewable(idOf(high)); }));
    const xcb_window_t film = client.makeWindow(whole, {.managed = true});
    const std::uint32_t state = client.atom("_NET_WM_STATE_FULLSCREEN");
    xcb_change_property(client.raw(), XCB_PROP_MODE_REPLACE, film, client.atom("_NET_WM_STATE"),
                        XCB_ATOM_ATOM, 32, 1, &state);
    client.map(film);
    client.sync();
    ASSERT_TRUE(waitUntil([&] { return focus() == film; }));
    client.raise(film);
    EXPECT_TRUE(managerCatchesUp());
    // No manager has it there by itself.
    EXPECT_TRUE(waitUntil([&] { return high.isBypassing() && isAbove(high, film) && isAbove(low, film); }));
    EXPECT_TRUE(waitUntil([&] { return !low.isOccluded(); }));
    EXPECT_EQ(focus(), film);
    EXPECT_EQ(high.frame(), (DesktopRect{550, 250, 100, 100}));

    robot.click({570, 630});
    EXPECT_TRUE(waitUntil([&] { return focus() == idOf(high) && high.isKey(); }));
    high.orderOut();
    EXPECT_TRUE(waitUntil([&] { return focus() == film; }));
    client.destroy(film);
    client.sync();
    high.orderFront();
    EXPECT_TRUE(waitUntil([&] { return toolkit::isViewable(idOf(high)); }));
    EXPECT_EQ(high.isBypassing(), name == std::string("i3")) << "its place is in the manager's hands again";
  }
}

TEST_F(PanelTest, isOnAllDesktopsOfAManagerThatWantsItSaidTwice) {
  const test::XfceManager manager(xServer(), test::XfceManager::Way::plain);
  Panel panel(*desktop, PanelKind::managed, {600, 300, 200, 200});
  panel.orderFront();
  EXPECT_TRUE(waitUntil([&] { return toolkit::isViewable(idOf(panel)); }));
  EXPECT_FALSE(panel.isBypassing());
}

TEST_F(PanelTest, managedPanelsOfAHigherLevelStayAboveTheLoupe) {
  const test::WindowManager manager(xServer());
  Panel high(*desktop, PanelKind::managed, {600, 300, 200, 200});
  high.setLevel(4);
  high.orderFront();
  Panel low(*desktop, PanelKind::bypassing, {650, 350, 100, 100});
  low.setLevel(3);
  low.orderFront();
  const auto levels = [&] {
    std::vector<int> found;
    for (const StackedWindow& window : desktop->windows().windows()) {
      if (window.own) found.push_back(window.own->level);
    }
    return found;
  };
  EXPECT_TRUE(waitUntil([&] { return levels() == std::vector{3, 4}; }));
  EXPECT_EQ(high.frame(), (DesktopRect{600, 300, 200, 200}));
}

TEST_F(PanelTest, aPanelThatTheManagerHasMinimisedIsGoneAndComesBack) {
  const test::WindowManager manager(xServer());
  Panel panel(*desktop, PanelKind::managed, {600, 300, 200, 200});
  const auto isSeen = [&] { return test::waitUntil([&] { return toolkit::isViewable(idOf(panel)); }); };
  const auto minimise = [&] {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = idOf(panel);
    event.type = client.atom("WM_CHANGE_STATE");
    event.data.data32[0] = 3;  // iconic
    xcb_send_event(client.raw(), 0, client.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    client.sync();
    return test::waitUntil([&] { return !panel.isVisible(); });
  };
  toolkit::setInTaskbar(panel.window(), true);  // managers minimise no others
  panel.orderFront();
  ASSERT_TRUE(isSeen());
  ASSERT_TRUE(minimise());
  panel.orderFront();
  EXPECT_TRUE(panel.isVisible());
  EXPECT_TRUE(isSeen());

  ASSERT_TRUE(minimise());
  panel.orderOut();
  panel.orderFront();
  EXPECT_TRUE(isSeen()) << "not as an icon again";
  EXPECT_TRUE(panel.isVisible());
}

TEST_F(PanelTest, reportsMotionWhereverItIsAndThenIsQuiet) {
  robot.moveTo({10, 10});
  Panel panel(*desktop, PanelKind::bypassing, {600, 300, 100, 100});
  panel.orderFront();
  ASSERT_TRUE(shown(panel));
  int over = 0;
  int own = 0;
  const Subscription elsewhere =
      desktop->pointer().observeMotion(Pointer::Over::otherWindows, [&] { ++over; });
  Subscription here = desktop->pointer().observeMotion(Pointer::Over::ownWindows, [&] { ++own; });
  robot.moveTo({20, 20});
  EXPECT_TRUE(waitUntil([&] { return over == 1; }));
  robot.moveTo({650, 550});
  EXPECT_TRUE(waitUntil([&] { return own > 0; }));
  EXPECT_EQ(desktop->pointer().position(), (DesktopPoint{650.5, 349.5}));

  // The same place through a panel that lets the mouse pass belongs to what is below.
  panel.setIgnoresMouseEvents(true);
  robot.moveTo({651, 551});
  EXPECT_TRUE(waitUntil([&] { return over > 1; }));

  panel.setIgnoresMouseEvents(false);
  here = {};
  const int before = own;
  robot.moveTo({652, 552});
  robot.moveTo({20, 20});
  const int overBefore = over;
  EXPECT_TRUE(waitUntil([&] { return over > overBefore; }));
  EXPECT_EQ(own, before);
}

TEST_F(PanelTest, motionIsReportedAtMostSixtyTimesASecondAndTheLastOneCounts) {
  std::vector<DesktopPoint> seen;
  const Subscription all = desktop->pointer().observeMotion(
      Pointer::Over::otherWindows, [&] { seen.push_back(desktop->pointer().position()); });
  for (int x = 100; x <= 400; ++x)
    robot.moveTo({x, 100});
  EXPECT_TRUE(waitUntil([&] { return !seen.empty() && seen.back().x == 400.5; }));
  EXPECT_LT(seen.size(), 100U);
}

TEST_F(PanelTest, knowsTheMonitorAndWhatItsBarsLeave) {
  const std::vector<Screen> screens = desktop->screens().screens();
  ASSERT_EQ(screens.size(), 1U);
  EXPECT_EQ(screens[0].frame, (DesktopRect{0, 0, 1440, 900}));
  EXPECT_EQ(screens[0].visibleFrame, screens[0].frame);
  EXPECT_TRUE(screens[0].displayID.has_value());

  const test::WindowManager manager(xServer());
  const xcb_window_t bar = client.makeWindow({0, 870, 1440, 30}, {.managed = true});
  const std::uint32_t strut[12] = {0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 1439};
  xcb_change_property(client.raw(), XCB_PROP_MODE_REPLACE, bar, client.atom("_NET_WM_STRUT_PARTIAL"),
                      XCB_ATOM_CARDINAL, 32, 12, strut);
  client.map(bar);
  client.sync();
  EXPECT_TRUE(waitUntil([&] {
    return desktop->screens().screens()[0].visibleFrame == DesktopRect{0, 30, 1440, 870};
  }));
  ASSERT_TRUE(desktop->screens().mainScreen().has_value());
  EXPECT_EQ(desktop->screens().mainScreen()->name, screens[0].name);
}

TEST_F(PanelTest, followsMonitorsThatComeAndGo) {
  int changes = 0;
  const Subscription watch = desktop->screens().changed.subscribe([&] { ++changes; });
  client.defineMonitor("left", {0, 0, 600, 900}, false);
  client.defineMonitor("right", {600, 0, 840, 900}, true);
  test::announceMonitors(client, true);
  const auto frames = [&] {
    std::vector<DesktopRect> found;
    for (const Screen& screen : desktop->screens().screens())
      found.push_back(screen.frame);
    return found;
  };
  EXPECT_TRUE(waitUntil([&] {
    const auto found = frames();
    return std::ranges::count(found, DesktopRect{-600, 0, 600, 900}) == 1 &&
           std::ranges::count(found, DesktopRect{0, 0, 840, 900}) == 1;
  }));
  EXPECT_EQ(desktop->screens().mainScreen()->name, "right");
  client.deleteMonitor("left");
  client.deleteMonitor("right");
  test::announceMonitors(client, false);
  EXPECT_TRUE(waitUntil([&] { return frames() == std::vector{DesktopRect{0, 0, 1440, 900}}; }));
  EXPECT_GE(changes, 2);
}

}  // namespace
}  // namespace velicor::desktop
