#include "menubar/hot_key.h"

#include <cstdlib>

#include <gmock/gmock.h>
#include <QProcess>
#include <QTemporaryDir>

#include "platform/desktop/desktop.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"
#include "support/manual_clock.h"
#include "support/robot.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

using test::waitUntil;
using testing::ElementsAre;
namespace key = test::key;

class HotKeyTest : public testing::Test {
 protected:
  // Whether another program can have the default combination, with more modifiers; it keeps it then.
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

  bool triggersOnceWith(std::uint8_t last) {
    const int before = triggers;
    robot.strike({key::control, key::alt, key::super, last});
    return waitUntil([&] { return triggers > before; }) && (test::settle(), triggers == before + 1);
  }

  HotKey& hotKey() {
    HotKey::shared().onTrigger = [this] { ++triggers; };
    return HotKey::shared();
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
  int triggers = 0;
};

TEST_F(HotKeyTest, theLatestRegistrationIsTheOnlyOneAndCallsOnALaterTurn) {
  hotKey().registerHotKey();
  hotKey().registerHotKey();
  EXPECT_FALSE(otherTakes());
  int pressedBeforeTrigger = 0;
  const Subscription pressed = hotKeys.pressed.subscribe([&] { pressedBeforeTrigger += triggers == 0; });
  EXPECT_TRUE(triggersOnceWith(key::s));
  EXPECT_EQ(pressedBeforeTrigger, 1);

  hotKey().setKeyCode(0);
  hotKey().registerHotKey();
  EXPECT_TRUE(otherTakes());
  EXPECT_TRUE(triggersOnceWith(key::a));

  // A press that nobody wants, and one whose shortcut goes before its turn comes.
  hotKey().onTrigger = nullptr;
  robot.strike({key::control, key::alt, key::super, key::a});
  test::settle();
  otherLetsGo();
}

TEST_F(HotKeyTest, aRefusedCombinationStaysAndWorksOnceItIsFree) {
  ASSERT_TRUE(otherTakes(XCB_MOD_MASK_2));  // only while num lock is on
  hotKey().registerHotKey();
  EXPECT_THAT(log.lines(), ElementsAre("Velicor: could not register hot key (status 10)"));
  EXPECT_FALSE(hotKey().isRegistered());
  EXPECT_EQ(HotKey::displayString(hotKey().keyCode(), hotKey().modifiers()), "⌃⌥⌘S");
  EXPECT_TRUE(otherTakes());  // nothing of it has stayed with us

  otherLetsGo();
  hotKey().registerHotKey();
  EXPECT_TRUE(triggersOnceWith(key::s));

  hotKey().setKeyCode(200);
  hotKey().registerHotKey();
  EXPECT_EQ(log.lines().back(), "Velicor: could not register hot key (status -1)");
  EXPECT_TRUE(otherTakes());
  otherLetsGo();
}

TEST_F(HotKeyTest, restoresTwoIntegersOf32BitsOrNothing) {
  using settings::Value;
  constexpr std::int64_t largest = 4294967295;
  const std::pair<std::uint32_t, std::uint32_t> standard{1, 0x1900};
  const struct {
    std::optional<Value> keyCode;
    std::optional<Value> modifiers;
    std::pair<std::uint32_t, std::uint32_t> expected;
  } table[] = {{{}, {}, standard},
               {Value(std::int64_t{0}), {}, standard},
               {{}, Value(std::int64_t{0x300}), standard},
               {Value(std::int64_t{0}), Value(std::int64_t{0x300}), {0, 0x300}},
               {Value(largest), Value(largest), {4294967295U, 4294967295U}},
               {Value(largest + 1), Value(std::int64_t{0x300}), standard},
               {Value(std::int64_t{0}), Value(std::int64_t{-1}), standard},
               {Value(2.0), Value(std::int64_t{0x300}), standard},
               {Value(std::int64_t{0}), Value(std::string("768")), standard}};
  for (const auto& row : table) {
    settings.remove(HotKey::keyCodeSetting);
    settings.remove(HotKey::modifiersSetting);
    if (row.keyCode) settings.setValue("hotKeyCode", *row.keyCode);
    if (row.modifiers) settings.setValue("hotKeyModifiers", *row.modifiers);
    const HotKey restored({settings, hotKeys});
    EXPECT_EQ(std::pair(restored.keyCode(), restored.modifiers()), row.expected) << &row - table;
  }
}

TEST_F(HotKeyTest, isShownInSymbolsAndByTheLayout) {
  EXPECT_EQ(HotKey::displayString(122, 0x1200), "⌃⇧F1");
  EXPECT_EQ(HotKey::displayString(36, 0x1B00), "⌃⌥⇧⌘↩");
  EXPECT_EQ(HotKey::displayString(90, 0xFFFFE4FF), "F20");
  int changes = 0;
  const Subscription watch = hotKey().displayChanged.subscribe([&] { ++changes; });
  hotKey().setKeyCode(16);
  hotKey().setModifiers(0x300);
  EXPECT_EQ(changes, 2);
  ASSERT_EQ(QProcess::execute("setxkbmap", {"de"}), 0);
  EXPECT_TRUE(waitUntil([&] { return changes > 2; }));
  EXPECT_EQ(HotKey::displayString(hotKey().keyCode(), hotKey().modifiers()), "⇧⌘Z");
  EXPECT_EQ(QProcess::execute("setxkbmap", {"us"}), 0);

  using enum Qt::KeyboardModifier;
  EXPECT_EQ(HotKey::carbonModifiers(ShiftModifier | ControlModifier | AltModifier | MetaModifier), 0x1B00U);
  EXPECT_EQ(HotKey::carbonModifiers(MetaModifier | ShiftModifier | KeypadModifier | GroupSwitchModifier),
            0x300U);
}

}  // namespace
}  // namespace velicor
