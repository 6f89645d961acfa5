#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QVBoxLayout>

#include "controls/label.h"
#include "controls/mini_slider.h"
#include "controls/plain_button.h"
#include "controls/push_button.h"
#include "palette/color_editor.h"
#include "palette/color_patch.h"
#include "palette/color_well.h"
#include "palette/legend_view.h"
#include "palette/palette_editor.h"
#include "palette/preset_grid.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/panel.h"
#include "support/main_loop.h"
#include "support/robot.h"
#include "support/x11_main.h"
#include "support/x_client.h"

namespace velicor {
namespace {

using controls::Label;
using controls::MiniSlider;
using controls::PlainButton;
using controls::PushButton;
using testing::ElementsAre;
using test::waitUntil;
using test::xServer;
using Mode = MetalProcessor::Mode;

// Those that can be seen, in the order of the layout.
template <typename Kind>
std::vector<Kind*> all(const QWidget& inside) {
  std::vector<Kind*> found;
  for (QWidget* child : inside.findChildren<QWidget*>()) {
    auto* const wanted = dynamic_cast<Kind*>(child);
    if (wanted && child->isVisibleTo(&inside)) found.push_back(wanted);
  }
  return found;
}

std::vector<std::string> texts(const QWidget& inside) {
  std::vector<std::string> found;
  for (const Label* label : all<Label>(inside))
    found.push_back(label->text().toStdString());
  return found;
}

QRect placeIn(const QWidget& whole, const QWidget& part) { return {part.mapTo(&whole, QPoint(0, 0)), part.size()}; }

class PaletteViewsTest : public testing::Test {
 protected:
  void SetUp() override {
    window.setWindowFlags(Qt::X11BypassWindowManagerHint);
    window.setGeometry(600, 300, 328, 300);
    auto* layout = new QVBoxLayout(&window);
    layout->setContentsMargins({});
    layout->addWidget(editor);
    layout->addStretch();
    editor->onChange = [this](const Palette& palette) { reported.push_back(palette); };
    robot.moveTo({5, 5});
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    test::settle();
  }

  PlainButton& button(const QString& text) {
    for (PlainButton* candidate : all<PlainButton>(*editor))
      if (candidate->accessibleText() == text) return *candidate;
    throw std::runtime_error("no such button");
  }

  void expand(int height) {
    button("CHANGE COLORS").click();
    ASSERT_TRUE(waitUntil([&] { return editor->height() == height; }));
    test::settle();
  }

  ColorWell& well(std::size_t index) { return *all<ColorWell>(*editor).at(index); }

  static DevicePoint middle(const QWidget& widget) {
    const QPoint point = widget.mapToGlobal(widget.rect().center());
    return {point.x(), point.y()};
  }

  void openWell(std::size_t index) {
    robot.click(middle(well(index)));
    ASSERT_TRUE(waitUntil([&] { return well(index).open() && popover(index).isActiveWindow(); }));
    test::settle();
  }

  QWidget& popover(std::size_t index) { return *well(index).editor()->window(); }

  std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  test::XClient client{xServer().name()};
  test::Robot robot{xServer().name()};
  QWidget window;
  PaletteEditor* editor = new PaletteEditor(*desktop, Palette(), Mode::skin);
  std::vector<Palette> reported;
};

TEST_F(PaletteViewsTest, LegendNamesTheColoursOfEachMode) {
  Palette palette;
  palette.heat[5] = {0, 0, 1};
  LegendView legend(Mode::original, Palette());
  legend.resize(328, 34);
  EXPECT_THAT(texts(legend), ElementsAre("analysis off"));
  EXPECT_THAT(all<ColorPatch>(legend), testing::IsEmpty());
  legend.setMode(Mode::skin);
  EXPECT_THAT(texts(legend), ElementsAre("correct", "green", "pink", "non-skin"));
  legend.setMode(Mode::exposure);
  legend.setPalette(palette);
  EXPECT_THAT(texts(legend), ElementsAre("clip", "hot", "skin", "dark skin", "shadow", "black"));
  const auto squares = all<ColorPatch>(legend);
  EXPECT_EQ(squares[1]->color(), QColor(0, 0, 255));
  EXPECT_EQ(squares[5]->color(), QColor(0x6B, 0, 0x8C));
  QPixmap shown(legend.size());
  legend.render(&shown);
  const auto labels = all<Label>(legend);
  for (std::size_t i = 0; i < squares.size(); ++i) {
    const QRect square = placeIn(legend, *squares[i]);
    const QRect label = placeIn(legend, *labels[i]);
    EXPECT_EQ(square.size(), QSize(10, 10));
    EXPECT_EQ(label.left() - square.right() - 1, 5);
    EXPECT_EQ(label.size(), labels[i]->sizeHint());
    const int before = i > 0 ? placeIn(legend, *labels[i - 1]).right() + 1 + 12 : square.left();
    EXPECT_EQ(square.left(), before);
  }
  EXPECT_TRUE(legend.rect().contains(placeIn(legend, *labels.back())));
}

TEST_F(PaletteViewsTest, EditorUnfoldsAndKeepsUnfoldedThroughModes) {
  const int line = all<Label>(*editor).front()->height();
  EXPECT_EQ(editor->height(), 8 + line + 8);
  expand(8 + line + 10 + 3 * 18 + 2 * 8 + 4 + 8);
  EXPECT_THAT(texts(*editor), ElementsAre("CHANGE COLORS", "On the skin line", "Drifting green", "Drifting pink"));
  const QRect first = placeIn(*editor, well(0));
  EXPECT_EQ(first, QRect(0, 8 + line + 10, 36, 18));
  EXPECT_EQ(placeIn(*editor, well(1)).top() - first.bottom() - 1, 8);
  EXPECT_EQ(placeIn(*editor, *all<Label>(*editor)[1]).left(), 36 + 8);
  editor->setMode(Mode::original);
  EXPECT_EQ(editor->sizeHint().height(), 0);
  editor->setMode(Mode::exposure);
  test::settle();
  EXPECT_EQ(editor->height(), 8 + line + 10 + 4 * 18 + 3 * 8 + 4 + 8);
  EXPECT_THAT(texts(*editor),
              ElementsAre("CHANGE COLORS", "0%  black", "15%  deep shadow", "32%  shadow", "47%  dark skin",
                          "60%  skin target", "75%  hot", "90%  near clip", "100%  clip"));
  EXPECT_EQ(placeIn(*editor, well(7)), QRect((328 - 12) / 2 + 12, 8 + line + 10 + 3 * 26, 36, 18));
  EXPECT_EQ(all<ColorPatch>(*editor).front()->size(), QSize(96, 9));
}

TEST_F(PaletteViewsTest, ResetIsOfferedWhereAByteDiffers) {
  Palette close;
  close.skinOn.g = 0.949;
  editor->setPalette(close);
  EXPECT_THAT(texts(*editor), ElementsAre("CHANGE COLORS"));
  close.skinOn.g = 0.94;
  editor->setPalette(close);
  EXPECT_THAT(texts(*editor), ElementsAre("CHANGE COLORS", "Reset"));
  button("Reset").click();
  EXPECT_THAT(reported, ElementsAre(Palette::standard()));
  EXPECT_THAT(texts(*editor), ElementsAre("CHANGE COLORS"));
}

TEST_F(PaletteViewsTest, PopoverEditsLiveAndCancelPutsBack) {
  expand(editor->height() + 84);
  openWell(0);
  ColorEditor& colors = *well(0).editor();
  EXPECT_EQ(well(0).backup(), Palette().skinOn);
  EXPECT_THAT(texts(colors), ElementsAre("#FFF200", "R", "255", "G", "242", "B", "0"));
  EXPECT_EQ(colors.width(), 236);
  const QRect swatch = placeIn(colors, *all<ColorPatch>(colors).front());
  EXPECT_EQ(swatch, QRect(14, 14, 54, 26));
  const auto cells = all<PlainButton>(colors);
  ASSERT_EQ(cells.size(), 16U);
  EXPECT_EQ(placeIn(colors, *cells[0]).size(), QSize(20, 18));
  EXPECT_EQ(placeIn(colors, *cells[9]).topLeft() - placeIn(colors, *cells[0]).topLeft(), QPoint(25, 23));
  EXPECT_EQ(placeIn(colors, *cells[0]).top() - swatch.bottom() - 1, 12);
  const auto border = [&](std::size_t i) { return static_cast<ColorPatch&>(cells[i]->content()).border(); };
  EXPECT_EQ(border(3), (ColorPatch::Border{2, 0.90}));
  EXPECT_EQ(border(4), (ColorPatch::Border{1, 0.25}));

  robot.click(middle(*cells[3]));
  ASSERT_TRUE(waitUntil([&] { return reported.size() == 1; }));
  EXPECT_EQ(reported.back().skinOn, (Palette::RGB{1.0, 0.949, 0.0}));
  MiniSlider& blue = *all<MiniSlider>(colors).at(2);
  robot.click(middle(blue));
  ASSERT_TRUE(waitUntil([&] { return reported.size() == 2; }));
  EXPECT_NEAR(reported.back().skinOn.b, 0.5, 0.02);
  EXPECT_EQ(reported.back().skinOn.g, 0.949);
  robot.click(middle(*all<PushButton>(colors).front()));
  ASSERT_TRUE(waitUntil([&] { return !well(0).open(); }));
  EXPECT_EQ(reported.back().skinOn, Palette().skinOn);
}

TEST_F(PaletteViewsTest, PopoverPointsAtTheWellAndTakesAndReturnsTheKeyboard) {
  expand(editor->height() + 84);
  window.activateWindow();
  openWell(1);
  const DeviceRect place = desktop::Panel::of(well(1).editor())->deviceFrame();
  const QPoint corner = well(1).mapToGlobal(QPoint(0, 18));
  EXPECT_EQ(place.y, corner.y());
  EXPECT_EQ(place.x + place.width / 2, corner.x() + 18);
  EXPECT_EQ(desktop::Panel::of(well(1).editor())->level(), 5);

  std::vector<QWidget*> stops;
  for (int i = 0; i < 7; ++i) {
    stops.push_back(QApplication::focusWidget());
    EXPECT_FALSE(QAccessible::queryAccessibleInterface(stops.back())->text(QAccessible::Name).isEmpty());
    if (i < 6) QTest::keyClick(stops.back(), Qt::Key_Tab);
  }
  EXPECT_EQ(stops[0], stops[6]);
  EXPECT_EQ(std::ranges::count(stops, stops[0]), 2);
  QTest::keyClick(stops[0], Qt::Key_Right);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
  EXPECT_EQ(reported.size(), 1U);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  EXPECT_FALSE(well(1).open());
  EXPECT_EQ(well(1).rgb(), reported.back().skinGreen);
}

// Neither what lies below nor the black of a window without alpha shows through.
TEST_F(PaletteViewsTest, PopoverIsOpaqueWithAndWithoutACompositor) {
  expand(editor->height() + 84);
  openWell(0);
  const auto grabbed = [&] { return popover(0).grab().toImage(); };
  const QRegion cut = popover(0).mask();
  ASSERT_FALSE(cut.isEmpty());
  const QImage square = grabbed();
  int transparent = 0;
  for (const QRect& part : cut) {
    for (int y = part.top(); y <= part.bottom(); ++y) {
      for (int x = part.left(); x <= part.right(); ++x)
        transparent += qAlpha(square.pixel(x, y)) < 255 ? 1 : 0;
    }
  }
  EXPECT_EQ(transparent, 0);

  client.takeSelection("_NET_WM_CM_S0");
  ASSERT_TRUE(waitUntil([&] { return popover(0).mask().isEmpty(); }));
  const QImage rounded = grabbed();
  EXPECT_EQ(qAlpha(rounded.pixel(0, rounded.height() - 1)), 0);
  for (const int x : {0, 5})
    EXPECT_EQ(qAlpha(rounded.pixel(x, rounded.height() / 2)), 255);
}

TEST_F(PaletteViewsTest, ClicksOutsideAndEscapeDismissAndKeepTheColour) {
  expand(editor->height() + 84);
  const auto change = [&] { QTest::keyClick(all<MiniSlider>(*well(2).editor()).front(), Qt::Key_Left); };
  const auto isClosed = [&] { return !well(2).open() && !popover(2).isVisible(); };
  openWell(2);
  change();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  EXPECT_TRUE(isClosed());
  openWell(2);
  robot.click({20, 20});  // nobody's window
  EXPECT_TRUE(waitUntil(isClosed));
  openWell(2);
  robot.click(middle(well(2)));  // the well itself does not open it again
  EXPECT_TRUE(waitUntil(isClosed));
  test::settle();
  EXPECT_TRUE(isClosed());
  openWell(2);
  window.hide();
  EXPECT_TRUE(isClosed());
  EXPECT_LT(well(2).rgb().r, 1);
  EXPECT_EQ(reported.size(), 1U);
}

}  // namespace
}  // namespace velicor
