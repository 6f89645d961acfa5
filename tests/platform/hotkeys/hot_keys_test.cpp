#include "platform/hotkeys/hot_keys.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <QProcess>
#include <QTimer>

#include "platform/desktop/desktop.h"
#include "platform/desktop/display_server.h"
#include "platform/hotkeys/key_codes.h"
#include "platform/hotkeys/modifier_mask.h"
#include "platform/hotkeys/xkb_protocol.h"
#include "support/main_loop.h"
#include "support/robot.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor::hotkeys {
namespace {

using test::waitUntil;
namespace key = test::key;

constexpr std::uint32_t keyS = 1;
constexpr std::uint32_t threeModifiers = controlKey | optionKey | commandKey;
const std::vector<std::uint8_t> combination{key::control, key::alt, key::super, key::s};

bool setLayout(const QStringList& arguments) { return QProcess::execute("setxkbmap", arguments) == 0; }

// Another program has the keyboard.
class HotKeysTest : public testing::Test {
 protected:
  HotKeysTest() {
    const std::uint32_t mask = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_change_window_attributes(other.raw(), window, XCB_CW_EVENT_MASK, &mask);
    xcb_set_input_focus(other.raw(), XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
    other.sync();
  }

  // Leaves the keyboard as the next test expects it.
  ~HotKeysTest() override { setLayout({"us"}); }

  std::string names(std::initializer_list<std::uint32_t> keyCodes) {
    std::string text;
    for (const std::uint32_t keyCode : keyCodes)
      text += hotKeys.keyboard().keyName(keyCode);
    return text;
  }

  // Counts the presses that one strike of the combination is taken for.
  int pressesOfAStrike() {
    const int before = presses;
    robot.strike(combination);
    return waitUntil([&] { return presses > before; }) ? (test::settle(), presses - before) : 0;
  }

  // Whether the server has told the other program of such an event.
  bool otherGets(std::uint8_t type, const std::function<bool(const xcb_generic_event_t&)>& accept) {
    return waitUntil([&] {
      while (const x11::Owned<xcb_generic_event_t> event{xcb_poll_for_event(other.raw())}) {
        if (x11::eventType(*event) == type && accept(*event)) return true;
      }
      return false;
    });
  }

  test::XClient other{test::xServer().name()};
  const xcb_window_t window = other.showColour({50, 50, 300, 200}, 0x00ff00);
  test::Robot robot{test::xServer().name()};
  const std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  HotKeys hotKeys{*desktop};
  int presses = 0;
  const Subscription counting = hotKeys.pressed.subscribe([this] { ++presses; });
};

TEST_F(HotKeysTest, oneStrikeIsOnePressWhateverTheLocksAndNobodyElseSeesIt) {
  const auto registration = hotKeys.registerHotKey(keyS, threeModifiers);
  ASSERT_TRUE(registration.has_value());
  for (const std::uint8_t lock : {key::numLock, key::capsLock, key::numLock, key::capsLock}) {
    robot.strike({lock});
    EXPECT_EQ(pressesOfAStrike(), 1);
  }
  // With a modifier less or more it is the other program's; these are the first it hears of the key.
  const int before = presses;
  robot.strike({key::control, key::alt, key::s});
  robot.strike({key::control, key::alt, key::super, key::shift, key::s});
  for (const unsigned state : {12U, 77U}) {
    EXPECT_TRUE(otherGets(XCB_KEY_PRESS, [&](const xcb_generic_event_t& event) {
      const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(event);
      return press.detail == key::s && press.state == state;
    }));
  }
  test::settle();
  EXPECT_EQ(presses, before);
}

TEST_F(HotKeysTest, holdingItDownIsOnePress) {
  const auto registration = hotKeys.registerHotKey(keyS, threeModifiers);
  int events = 0;
  const Subscription watch = desktop->server().event.subscribe([&](const desktop::ServerEvent& event) {
    if (event.type() == XCB_KEY_PRESS) ++events;
  });
  for (const std::uint8_t keycode : combination)
    robot.pressKey(keycode);
  EXPECT_TRUE(waitUntil([&] { return events >= 4; }));
  EXPECT_EQ(presses, 1);
  for (const std::uint8_t keycode : combination)
    robot.releaseKey(keycode);
  EXPECT_EQ(pressesOfAStrike(), 1);
}

TEST_F(HotKeysTest, whatIsHeldWhileItIsRegisteredWasNotPressedForUs) {
  for (const std::uint8_t keycode : combination)
    robot.pressKey(keycode);
  auto registration = hotKeys.registerHotKey(keyS, threeModifiers);
  // The keyboard comes to us with the first repetition.
  EXPECT_TRUE(otherGets(XCB_FOCUS_OUT, [](const xcb_generic_event_t& event) {
    return reinterpret_cast<const xcb_focus_out_event_t&>(event).mode == XCB_NOTIFY_MODE_GRAB;
  }));
  test::settle();
  EXPECT_EQ(presses, 0);
  for (const std::uint8_t keycode : combination)
    robot.releaseKey(keycode);
  EXPECT_EQ(pressesOfAStrike(), 1);

  // Let go before any repetition, of which nobody tells us.
  registration = failure(errorDomain, noSuchKey, "none");
  for (const std::uint8_t keycode : combination)
    robot.pressKey(keycode);
  registration = hotKeys.registerHotKey(keyS, threeModifiers);
  for (const std::uint8_t keycode : combination)
    robot.releaseKey(keycode);
  int beats = 0;
  QTimer beat;
  beat.callOnTimeout(&beat, [&] { ++beats; });
  beat.start(20);  // in step with the looks for the release
  ASSERT_TRUE(waitUntil([&] { return beats == 3; }));
  EXPECT_EQ(pressesOfAStrike(), 1);
}

TEST_F(HotKeysTest, followsModifiersToOtherKeys) {
  const auto registration = hotKeys.registerHotKey(keyS, threeModifiers);
  int changes = 0;
  const Subscription watch = hotKeys.keyboard().changed.subscribe([&] { ++changes; });
  // Shift, lock, control, Alt, nothing, Super, nothing, Num Lock.
  const xcb_keycode_t places[] = {key::shift, key::capsLock, key::control, key::alt, 0, key::super,
                                  0,          key::numLock};
  std::free(
      xcb_set_modifier_mapping_reply(other.raw(), xcb_set_modifier_mapping(other.raw(), 1, places), nullptr));
  ASSERT_TRUE(waitUntil([&] { return hotKeys.keyboard().modifiers().command == XCB_MOD_MASK_3; }));
  EXPECT_EQ(changes, 1);
  for (int round = 0; round < 2; ++round) {
    robot.strike({key::numLock});
    EXPECT_EQ(pressesOfAStrike(), 1);
  }
}

TEST_F(HotKeysTest, keysAreCalledWhatTheLayoutPutsInTheirPlace) {
  EXPECT_EQ(names({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}), "ASDFHGZXCV<BQWERYT");
  EXPECT_EQ(names({18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29}), "123465=97-80");
  EXPECT_EQ(names({30, 31, 32, 33, 34, 35, 37, 38, 39, 40}), "]OU[IPLJ'K");
  EXPECT_EQ(names({41, 42, 43, 44, 45, 46, 47, 50}), ";\\,/NM.`");
  EXPECT_EQ(names({82, 83, 84, 85, 86, 87, 88, 89, 91, 92, 65, 67, 69, 75, 78, 81}), "0123456789.*+/-=");
  EXPECT_EQ(names({53, 123, 200}), "???");  // nothing to see, or no key
  for (std::uint32_t code = 0; code < 0x80; ++code) {
    const auto keycode = serverKeycode(code);
    EXPECT_TRUE(!keycode || keyCodeOf(*keycode) == code) << code;
  }

  ASSERT_TRUE(setLayout({"de,ru"}));
  EXPECT_TRUE(waitUntil([&] { return names({16, 6, 41, 24, 10}) == "ZYÖ´<"; }));
  xcb_xkb_use_extension(other.raw(), 1, 0);
  xcb_xkb_latch_lock_state(other.raw(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, 1, 0, 0, 0);
  other.sync();
  EXPECT_TRUE(waitUntil([&] { return names({0, 16}) == "ФН"; }));
}

}  // namespace
}  // namespace velicor::hotkeys
