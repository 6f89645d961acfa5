#include "menubar/hot_key.h"

#include <cstdlib>

#include <gmock/gmock.h>
#include <QProcess>
#include <QTemporaryDir>

#include "platform/desktop/desktop.h"
#include "platform/desktop/display_server.h"
#include "platform/hotkeys/key_codes.h"
#include "platform/hotkeys/xkb_protocol.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"
#include "support/manual_clock.h"
#include "support/robot.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

using test::waitUntil;
namespace key = test::key;

bool setLayout(const QStringList& arguments) { return QProcess::execute("setxkbmap", arguments) == 0; }

std::string names(std::initializer_list<std::uint32_t> keyCodes) {
  std::string text;
  for (const std::uint32_t keyCode : keyCodes)
    text += HotKey::keyName(keyCode);
  return text;
}

// Another program has the keyboard.
class HotKeyTest : public testing::Test {
 protected:
  HotKeyTest() {
    const std::uint32_t mask = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_FOCUS_CHANGE;
    const xcb_window_t window = other.showColour({50, 50, 300, 200}, 0x00ff00);
    xcb_change_window_attributes(other.raw(), window, XCB_CW_EVENT_MASK, &mask);
    xcb_set_input_focus(other.raw(), XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
    other.sync();
    hotKey.onTrigger = [this] { ++triggers; };
  }

  ~HotKeyTest() override { setLayout({"us"}); }

  // Whether the other program can have the default combination, with more modifiers; it keeps it then.
  bool otherTakes(std::uint16_t more = 0) {
    constexpr unsigned modifiers = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
    auto* error = xcb_request_check(
        other.raw(), xcb_grab_key_checked(other.raw(), 0, other.root(),
                                          static_cast<std::uint16_t>(modifiers | more), key::s, 1, 1));
    const bool taken = error == nullptr;
    std::free(error);
    return taken;
  }

  void otherLetsGo() {
    xcb_ungrab_key(other.raw(), key::s, other.root(), XCB_MOD_MASK_ANY);
    other.sync();
  }

  // Whether the server tells the other program of such an event.
  bool otherGets(std::uint8_t type, const std::function<bool(const xcb_generic_event_t&)>& accept) {
    return waitUntil([&] {
      const x11::Owned<xcb_generic_event_t> event{xcb_poll_for_event(other.raw())};
      return event && x11::eventType(*event) == type && accept(*event);
    });
  }

  bool worksOnce(std::uint8_t last = key::s) {
    const int before = triggers;
    robot.strike({key::control, key::alt, key::super, last});
    return waitUntil([&] { return triggers > before; }) && (test::settle(), triggers == before + 1);
  }

  void hold(bool down) {
    for (const std::uint8_t keycode : {key::control, key::alt, key::super, key::s})
      down ? robot.pressKey(keycode) : robot.releaseKey(keycode);
  }

  QTemporaryDir folder;
  test::ManualClock clock;
  test::LogRecorder log;
  settings::Settings settings{(folder.path() + "/settings.json").toStdString(), clock};
  test::XClient other{test::xServer().name()};
  test::Robot robot{test::xServer().name()};
  const std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  hotkeys::HotKeys hotKeys{*desktop};
  HotKey::Installation installation{{settings, hotKeys}};
  HotKey& hotKey = HotKey::shared();
  int triggers = 0;
};

TEST_F(HotKeyTest, oneStrikeIsOneLaterCallWhateverTheLocksAndOnlyWithItsModifiers) {
  hotKey.registerHotKey();
  hotKey.registerHotKey();
  int presses = 0;
  const Subscription pressed = hotKeys.pressed.subscribe([&] { EXPECT_EQ(triggers, presses++); });
  for (const std::uint8_t lock : {key::numLock, key::capsLock, key::numLock, key::capsLock}) {
    robot.strike({lock});
    EXPECT_TRUE(worksOnce());
  }
  // With a modifier less or more it is the other program's; these are the first it hears of the key.
  robot.strike({key::control, key::alt, key::s});
  robot.strike({key::control, key::alt, key::super, key::shift, key::s});
  for (const unsigned state : {12U, 77U}) {
    EXPECT_TRUE(otherGets(XCB_KEY_PRESS, [&](const xcb_generic_event_t& event) {
      const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(event);
      return press.detail == key::s && press.state == state;
    }));
  }
  test::settle();
  EXPECT_EQ(triggers, 4);
}

TEST_F(HotKeyTest, holdingItDownIsOneCall) {
  hotKey.registerHotKey();
  int events = 0;
  const Subscription watch = desktop->server().event.subscribe(
      [&](const desktop::ServerEvent& event) { events += event.type() == XCB_KEY_PRESS; });
  hold(true);
  EXPECT_TRUE(waitUntil([&] { return events >= 4; }));
  EXPECT_EQ(triggers, 1);
  hold(false);
  EXPECT_TRUE(worksOnce());
}

TEST_F(HotKeyTest, whatIsHeldWhileItIsRegisteredWasNotMeant) {
  hold(true);
  hotKey.registerHotKey();
  // The keyboard comes to us with the first repetition.
  EXPECT_TRUE(otherGets(XCB_FOCUS_OUT, [](const xcb_generic_event_t& event) {
    return reinterpret_cast<const xcb_focus_out_event_t&>(event).mode == XCB_NOTIFY_MODE_GRAB;
  }));
  test::settle();
  EXPECT_EQ(triggers, 0);
  hold(false);
  EXPECT_TRUE(worksOnce());
}

TEST_F(HotKeyTest, followsModifiersToOtherKeys) {
  hotKey.registerHotKey();
  // Shift, lock, control, Alt, nothing, Super, nothing, Num Lock.
  const xcb_keycode_t places[] = {key::shift, key::capsLock, key::control, key::alt, 0, key::super,
                                  0,          key::numLock};
  const auto request = xcb_set_modifier_mapping(other.raw(), 1, places);
  std::free(xcb_set_modifier_mapping_reply(other.raw(), request, nullptr));
  ASSERT_TRUE(waitUntil([&] { return hotKeys.keyboard().modifiers().command == XCB_MOD_MASK_3; }));
  for (int round = 0; round < 2; ++round) {
    robot.strike({key::numLock});
    EXPECT_TRUE(worksOnce());
  }
}

TEST_F(HotKeyTest, aRefusedCombinationStaysAndWorksOnceItIsFree) {
  ASSERT_TRUE(otherTakes(XCB_MOD_MASK_2));  // only while num lock is on
  hotKey.registerHotKey();
  EXPECT_EQ(log.lines(), std::vector<std::string>{"Velicor: could not register hot key (status 10)"});
  EXPECT_FALSE(hotKey.isRegistered());
  EXPECT_EQ(HotKey::displayString(hotKey.keyCode(), hotKey.modifiers()), "⌃⌥⌘S");
  EXPECT_TRUE(waitUntil([&] { return otherTakes(); })) << "nothing of it has stayed with us";
  otherLetsGo();
  hotKey.registerHotKey();
  EXPECT_TRUE(worksOnce());
  hotKey.setKeyCode(0);
  hotKey.registerHotKey();
  EXPECT_TRUE(waitUntil([&] { return otherTakes(); }));
  EXPECT_TRUE(worksOnce(key::a));
  hotKey.setKeyCode(200);
  hotKey.registerHotKey();
  EXPECT_EQ(log.lines().back(), "Velicor: could not register hot key (status -1)");
}

TEST_F(HotKeyTest, restoresTwoIntegersOf32BitsOrNothing) {
  using settings::Value;
  using Shortcut = std::pair<std::uint32_t, std::uint32_t>;
  const auto restored = [&](std::optional<Value> keyCode, std::optional<Value> modifiers) {
    keyCode ? settings.setValue("hotKeyCode", *keyCode) : settings.remove("hotKeyCode");
    modifiers ? settings.setValue("hotKeyModifiers", *modifiers) : settings.remove("hotKeyModifiers");
    const HotKey fresh({settings, hotKeys});
    return Shortcut(fresh.keyCode(), fresh.modifiers());
  };
  const Value zero = std::int64_t{0};
  const Value mask = std::int64_t{0x300};
  const Shortcut standard(1, 0x1900);
  EXPECT_EQ(restored(zero, mask), Shortcut(0, 0x300));
  EXPECT_EQ(restored(std::int64_t{4294967295}, mask), Shortcut(4294967295U, 0x300));
  EXPECT_EQ(restored(zero, {}), standard);
  EXPECT_EQ(restored({}, mask), standard);
  EXPECT_EQ(restored(std::int64_t{4294967296}, mask), standard);
  EXPECT_EQ(restored(zero, std::int64_t{-1}), standard);
  EXPECT_EQ(restored(2.0, mask), standard);
  EXPECT_EQ(restored(zero, std::string("768")), standard);
}

TEST_F(HotKeyTest, isCalledByItsModifiersAndWhatTheLayoutPutsInItsPlace) {
  EXPECT_EQ(HotKey::displayString(122, 0x1200), "⌃⇧F1");
  EXPECT_EQ(HotKey::displayString(36, 0xFFFFFFFF), "⌃⌥⇧⌘↩");
  EXPECT_EQ(names({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}), "ASDFHGZXCV<BQWERYT");
  EXPECT_EQ(names({18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32}), "123465=97-80]OU");
  EXPECT_EQ(names({33, 34, 35, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 50}), "[IPLJ'K;\\,/NM.`");
  EXPECT_EQ(names({82, 83, 84, 85, 86, 87, 88, 89, 91, 92, 65, 67, 69, 75, 78, 81}), "0123456789.*+/-=");
  EXPECT_EQ(names({51, 123, 200}), "???");  // nothing to see, or no key
  for (std::uint32_t code = 0; code < 0x80; ++code) {
    const auto keycode = hotkeys::serverKeycode(code);
    EXPECT_TRUE(!keycode || hotkeys::keyCodeOf(*keycode) == code) << code;
  }

  int changes = 0;
  const Subscription watch = hotKey.displayChanged.subscribe([&] { ++changes; });
  ASSERT_TRUE(setLayout({"de,ru"}));
  EXPECT_TRUE(waitUntil([&] { return changes > 0 && names({16, 6, 41, 24, 10}) == "ZYÖ´<"; }));
  xcb_xkb_use_extension(other.raw(), 1, 0);
  xcb_xkb_latch_lock_state(other.raw(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, 1, 0, 0, 0);
  other.sync();
  EXPECT_TRUE(waitUntil([&] { return names({0, 16}) == "ФН"; }));
}

}  // namespace
}  // namespace velicor
