#include "loupe/panel_hint.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "loupe/loupe_controller.h"
#include "loupe/panel_hint_bubble.h"
#include "support/main_loop.h"
#include "support/manual_clock.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

using namespace std::chrono_literals;
using test::waitUntil;

TEST(PanelHintBubbleTest, isAboveTheChipAndInsideTheScreen) {
  constexpr DesktopRect screen{0, 0, 1000, 800};
  const struct {
    const char* name;
    DesktopPoint chip;
    std::optional<DesktopRect> visible;
    DesktopPoint expected;
  } cases[] = {{"above", {500, 100}, screen, {408, 124}},
               {"at the left edge", {10, 100}, screen, {4, 124}},
               {"at the right edge", {980, 100}, screen, {796, 124}},
               {"wider than the screen: the right limit wins", {60, 100}, DesktopRect{0, 0, 150, 800}, {-54, 124}},
               {"just fits above", {500, 736}, screen, {408, 760}},
               {"no room above", {500, 737}, screen, {408, 689}},
               {"no screen", {-50, 900}, std::nullopt, {-142, 924}}};
  for (const auto& [name, chip, visible, expected] : cases) {
    EXPECT_EQ(PanelHintBubble::place({chip.x, chip.y, 16, 16}, {200, 40}, visible), expected) << name;
  }
}

class PanelHintTest : public testing::Test {
 protected:
  PanelHintTest() { loupe.panel().orderFront(); }

  // Whose window a click at this place goes to; input shapes count.
  xcb_window_t windowAt(DevicePoint place) {
    const auto asked = xcb_translate_coordinates(client.raw(), client.root(), client.root(),
                                                 static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y));
    auto* reply = xcb_translate_coordinates_reply(client.raw(), asked, nullptr);
    const xcb_window_t window = reply->child;
    std::free(reply);
    return window;
  }

  bool isThere() { return loupe.hintPanel() && loupe.hintPanel()->alphaValue() == 1; }

  std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  test::XClient client{test::xServer().name()};
  test::ManualClock clock;
  LoupeController loupe{nullptr, *desktop, clock};
};

TEST_F(PanelHintTest, staysForThreeSecondsAndIsReplacedByTheNext) {
  loupe.showPanelHint();
  ASSERT_TRUE(waitUntil([&] { return isThere(); }));
  clock.advance(2s);
  loupe.showPanelHint();
  ASSERT_TRUE(waitUntil([&] { return isThere(); }));
  clock.advance(2s);
  EXPECT_TRUE(isThere()) << "the first one's time is not the second one's";
  clock.advance(1s);
  EXPECT_TRUE(waitUntil([&] { return loupe.hintPanel() == nullptr; }));
  loupe.showPanelHint();  // may be there when the loupe goes
}

TEST_F(PanelHintTest, isCutOutOfTheScreenWithoutACompositorAndTakesNoClick) {
  constexpr std::uint32_t grey = 0x808080;
  constexpr std::uint32_t yellow = 0xFFD60A;
  const xcb_window_t ground = client.showColour({0, 0, 1440, 900}, grey);
  loupe.panel().orderFront();
  loupe.showPanelHint();
  const DesktopRect frame = loupe.hintPanel()->frame();
  // Centred over the chip of a loupe at (632.5, 362.5), 8 points above it.
  EXPECT_EQ(frame.midX(), 632.5 + 175 - 41 + 8);
  EXPECT_EQ(frame.minY(), 362.5 + 175 - 5 + 8);
  EXPECT_EQ(loupe.hintPanel()->panel().level(), 5);
  const int left = roundHalfAway(frame.x);
  const int top = roundHalfAway(900 - frame.maxY());
  const auto colourAt = [&](int x, int y) { return client.screenImage({left + x, top + y, 1, 1}).front(); };
  EXPECT_TRUE(waitUntil([&] { return colourAt(5, 15) == yellow; }));
  EXPECT_EQ(colourAt(2, 2), grey) << "outside the round corner";
  EXPECT_TRUE(waitUntil([&] { return colourAt(static_cast<int>(frame.width) / 2, 30) == yellow; })) << "the pointer";
  EXPECT_EQ(colourAt(20, 30), grey) << "beside the pointer";
  EXPECT_EQ(windowAt({left + 20, top + 15}), ground);
}

}  // namespace
}  // namespace velicor
