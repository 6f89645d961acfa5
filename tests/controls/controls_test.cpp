#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <QAccessible>
#include <QHBoxLayout>
#include <QTest>

#include "controls/label.h"
#include "controls/mini_slider.h"
#include "controls/plain_button.h"
#include "controls/popover_placement.h"
#include "controls/push_button.h"
#include "controls/segmented_picker.h"
#include "controls/switch.h"
#include "platform/desktop/reduced_motion.h"

namespace velicor::controls {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QAccessibleInterface& accessible(QWidget& widget) { return *QAccessible::queryAccessibleInterface(&widget); }

TEST(Controls, SliderReportsEveryMovementOfTheUserAndNoneOfTheProgram) {
  MiniSlider slider;
  slider.resize(112, 20);  // 100 points of travel
  std::vector<double> reported;
  slider.onChange = [&](double value) { reported.push_back(value); };
  slider.setValue(0.5);
  slider.setValue(std::nan(""));
  EXPECT_THAT(reported, IsEmpty());
  QTest::mousePress(&slider, Qt::LeftButton, {}, {58, 10});  // the knob, 2 points off its centre
  QTest::mouseMove(&slider, {68, 10});
  QTest::mouseMove(&slider, {500, 10});
  QTest::mouseRelease(&slider, Qt::LeftButton, {}, {500, 10});
  QTest::mouseMove(&slider, {20, 10});
  EXPECT_THAT(reported, ElementsAre(testing::DoubleNear(0.6, 1e-9), 1));
  for (const Qt::Key key : {Qt::Key_Home, Qt::Key_Home, Qt::Key_Right, Qt::Key_PageUp, Qt::Key_Down})
    QTest::keyClick(&slider, key);
  accessible(slider).valueInterface()->setCurrentValue(0.25);
  EXPECT_THAT(std::vector(reported.begin() + 2, reported.end()),
              ElementsAre(0, 0.01, testing::DoubleNear(0.11, 1e-9), testing::DoubleNear(0.1, 1e-9), 0.25));
  EXPECT_EQ(accessible(slider).text(QAccessible::Value), "25%");
}

TEST(Controls, PickerSelectsByPressAndReleaseInOneSegmentAndByKeys) {
  SegmentedPicker picker({{"10", 10}, {"15", 15}, {"30", 30}});
  picker.resize(300, 20);
  std::vector<int> reported;
  picker.onChange = [&](int value) { reported.push_back(value); };
  picker.setValue(24);
  EXPECT_EQ(picker.value(), std::nullopt);
  picker.setValue(15);
  QTest::mousePress(&picker, Qt::LeftButton, {}, {250, 10});
  QTest::mouseRelease(&picker, Qt::LeftButton, {}, {150, 10});
  QTest::mouseClick(&picker, Qt::LeftButton, {}, {150, 10});
  EXPECT_THAT(reported, IsEmpty());
  QTest::mouseClick(&picker, Qt::LeftButton, {}, {250, 10});
  for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Left, Qt::Key_Home, Qt::Key_End})
    QTest::keyClick(&picker, key);
  EXPECT_THAT(reported, ElementsAre(30, 15, 10, 30));
  EXPECT_EQ(accessible(picker).text(QAccessible::Value), "30");
}

TEST(Controls, SwitchTurnsByAClickOnItsTitleAndBySpace) {
  Switch lock("Lock");
  lock.resize(lock.sizeHint());
  std::vector<bool> reported;
  lock.onChange = [&](bool on) { reported.push_back(on); };
  lock.setOn(true);
  EXPECT_TRUE(accessible(lock).state().checked);
  QTest::mouseClick(&lock, Qt::LeftButton, {}, {3, 10});
  QTest::keyClick(&lock, Qt::Key_Space);
  accessible(lock).actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  lock.setEnabled(false);
  QTest::mouseClick(&lock, Qt::LeftButton, {}, {3, 10});
  EXPECT_THAT(reported, ElementsAre(false, true, false));
  EXPECT_EQ(accessible(lock).text(QAccessible::Name), "Lock");
}

TEST(Controls, ReturnPressesTheDefaultButtonAndElseTheFocusedOne) {
  QWidget window;
  auto* layout = new QHBoxLayout(&window);
  auto* plain = new PlainButton(new Label("More"));
  auto* usual = new PushButton("OK");
  layout->addWidget(plain);
  layout->addWidget(usual);
  int plainClicks = 0;
  int defaultClicks = 0;
  plain->onClick = [&] { ++plainClicks; };
  usual->onClick = [&] { ++defaultClicks; };
  window.show();
  QTest::keyClick(plain, Qt::Key_Return);
  usual->setDefault(true);
  QTest::keyClick(plain, Qt::Key_Return);
  QTest::mousePress(plain, Qt::LeftButton, {}, {2, 2});
  QTest::mouseRelease(plain, Qt::LeftButton, {}, {-20, 2});
  EXPECT_EQ(plainClicks, 1);
  EXPECT_EQ(defaultClicks, 1);
}

TEST(Controls, LabelShrinksToThreeQuartersAndWrapsIntoLines) {
  const TextStyle style{.size = 11};
  Label shrinking("15%  deep shadow", style, TextFit::shrink);
  const QSize natural = shrinking.sizeHint();
  shrinking.resize(natural);
  EXPECT_EQ(shrinking.shrinkage(), 1);
  shrinking.resize(natural.width() * 9 / 10, natural.height());
  EXPECT_NEAR(shrinking.shrinkage(), 0.9, 0.02);
  shrinking.resize(natural.width() / 3, natural.height());
  EXPECT_EQ(shrinking.shrinkage(), 0.75);
  const Label wrapping("a few words that wrap", style, TextFit::wrap);
  EXPECT_GE(wrapping.heightForWidth(60), 2 * natural.height());
}

TEST(Popover, StaysOnTheScreenAndPointsAtItsAnchor) {
  const DeviceRect screen{0, 0, 1000, 800};
  EXPECT_EQ(placePopover({500, 100, 36, 18}, 236, 200, screen, 20),
            (PopoverPlacement{{400, 118, 236, 200}, 118, true}));
  EXPECT_EQ(placePopover({980, 700, 20, 18}, 236, 200, screen, 20),
            (PopoverPlacement{{764, 500, 236, 200}, 216, false}));
  EXPECT_EQ(placePopover({0, 300, 36, 400}, 236, 700, screen, 20),
            (PopoverPlacement{{0, 100, 236, 700}, 20, true}));
}

TEST(ReducedMotion, IsReadFromTheDesktopsPublishedSettings) {
  using namespace std::string_view_literals;
  constexpr auto head = "\0\0\0\0" "\7\0\0\0" "\3\0\0\0"sv;
  constexpr auto theme = "\1\0\3\0" "abc\0" "\0\0\0\0" "\5\0\0\0" "hello\0\0\0"sv;
  constexpr auto color = "\2\0\1\0" "c\0\0\0" "\0\0\0\0" "\0\0\0\0\0\0\0\0"sv;
  constexpr auto number = "\0\0\2\0" "no\0\0" "\0\0\0\0" "\1\2\0\0"sv;
  const std::string all = std::string(head).append(theme).append(color).append(number);
  EXPECT_EQ(desktop::publishedInteger(all, "no"), 0x201);
  EXPECT_EQ(desktop::publishedInteger(all, "abc"), std::nullopt);
  for (std::size_t length = 0; length < all.size(); ++length)
    EXPECT_EQ(desktop::publishedInteger(std::string_view(all).substr(0, length), "no"), std::nullopt);
}

}  // namespace
}  // namespace velicor::controls
