#include "menubar/shortcut_recorder.h"

#include <gmock/gmock.h>
#include <QApplication>
#include <QShortcut>
#include <QTemporaryDir>
#include <QWidget>

#include "menubar/hot_key.h"
#include "platform/desktop/desktop.h"
#include "platform/x11/owned.h"
#include "support/bell.h"
#include "support/main_loop.h"
#include "support/manual_clock.h"
#include "support/robot.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

using test::waitUntil;
using testing::Pair;
namespace key = test::key;

class ShortcutRecorderTest : public testing::Test {
 protected:
  ShortcutRecorderTest() { show(); }

  void show() {
    recorder->show();
    ASSERT_TRUE(
        waitUntil([&] { return recorder->panel().isKey() && hasKeyboard(recorder->panel().window()); }));
  }

  bool hasKeyboard(const QWidget& window) {
    const x11::Owned<xcb_get_input_focus_reply_t> focus{
        xcb_get_input_focus_reply(other.raw(), xcb_get_input_focus(other.raw()), nullptr)};
    return focus && focus->focus == window.winId();
  }

  // What a strike makes of the open recorder: the key code and the mask that are then set, stored and told.
  std::pair<std::int64_t, std::int64_t> recorded(const std::vector<std::uint8_t>& keys) {
    const int before = changes;
    robot.strike(keys);
    EXPECT_TRUE(waitUntil([&] { return !recorder->panel().isVisible() && !QApplication::focusWindow(); }));
    EXPECT_EQ(changes, before + 1);
    EXPECT_EQ(HotKey::shared().keyCode(), settings.integer("hotKeyCode"));
    EXPECT_EQ(HotKey::shared().modifiers(), settings.integer("hotKeyModifiers"));
    show();
    return {HotKey::shared().keyCode(), HotKey::shared().modifiers()};
  }

  QTemporaryDir folder;
  test::ManualClock clock;
  settings::Settings settings{(folder.path() + "/settings.json").toStdString(), clock};
  test::XClient other{test::xServer().name()};
  const test::Bell bell{test::xServer().name()};
  test::Robot robot{test::xServer().name()};
  const std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  hotkeys::HotKeys hotKeys{*desktop};
  HotKey::Installation installation{{settings, hotKeys}};
  int changes = 0;
  std::unique_ptr<ShortcutRecorder> recorder = std::make_unique<ShortcutRecorder>(*desktop, settings, [this] {
    EXPECT_TRUE(HotKey::shared().isRegistered());
    ++changes;
  });
};

TEST_F(ShortcutRecorderTest, takesAnyKeyWithTwoModifiersAndForgetsItWithEsc) {
  QShortcut ours(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), &recorder->panel().window());
  int commands = 0;
  QObject::connect(&ours, &QShortcut::activated, &ours, [&] { ++commands; });
  EXPECT_THAT(recorded({key::super, key::shift, key::a}), Pair(0, 0x0300));
  EXPECT_THAT(recorded({key::control, key::shift, key::a}), Pair(0, 0x1200));
  EXPECT_THAT(recorded({key::control, key::shift, key::tab}), Pair(48, 0x1200));
  EXPECT_THAT(recorded({key::control, key::alt, key::enter}), Pair(36, 0x1800));
  EXPECT_THAT(recorded({key::control, key::super, key::escape}), Pair(1, 0x1900));
  EXPECT_THAT(recorded({key::escape}), Pair(1, 0x1900));
  EXPECT_EQ(commands, 0);
}

TEST_F(ShortcutRecorderTest, refusesFewerThanTwoModifiersWithABeepWhateverTheLocks) {
  for (const std::uint8_t lock : {key::numLock, key::capsLock, key::numLock, key::capsLock}) {
    robot.strike({lock});
    robot.strike({key::super, key::a});
    EXPECT_TRUE(bell.sounds());
  }
  robot.strike({key::tab});
  EXPECT_TRUE(bell.sounds());
  EXPECT_TRUE(recorder->panel().isVisible());
  EXPECT_FALSE(settings.integer("hotKeyCode"));
  EXPECT_EQ(changes, 0);
}

TEST_F(ShortcutRecorderTest, mayGoWhileItTellsOfAChange) {
  recorder = std::make_unique<ShortcutRecorder>(*desktop, settings, [this] { recorder.reset(); });
  show();
  robot.strike({key::super, key::shift, key::a});
  EXPECT_TRUE(waitUntil([&] { return recorder == nullptr; }));
  test::settle();
  EXPECT_EQ(settings.integer("hotKeyModifiers"), 0x300);
}

}  // namespace
}  // namespace velicor
