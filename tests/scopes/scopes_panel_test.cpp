// The scopes panel as it is: where its pieces are, what they are called, and what they do to the state.
#include "scopes/scopes_panel_controller.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>

#include "analysis/notification_names.h"
#include "analysis/views/live_texture_view.h"
#include "app/app_state_fixture.h"
#include "controls/control.h"
#include "controls/hairline.h"
#include "controls/label.h"
#include "controls/mini_slider.h"
#include "controls/plain_button.h"
#include "controls/push_button.h"
#include "controls/segmented_picker.h"
#include "controls/switch.h"
#include "menubar/hot_key.h"
#include "palette/legend_view.h"
#include "palette/palette_editor.h"
#include "scopes/more_below.h"
#include "scopes/panel_title_strip.h"
#include "scopes/parade_graticule.h"
#include "scopes/scope_view.h"
#include "scopes/scopes_geometry.h"
#include "scopes/scopes_view.h"
#include "scopes/vectorscope_graticule.h"
#include "support/main_loop.h"
#include "support/x11_main.h"

namespace velicor {
namespace {

using controls::Label;
using test::settle;
using test::waitUntil;
using Mode = MetalProcessor::Mode;

QString nameOf(QWidget& widget) {
  const QAccessibleInterface* facts = QAccessible::queryAccessibleInterface(&widget);
  return facts ? facts->text(QAccessible::Name) : QString();
}

class ScopesPanelTest : public test::AppStateFixture {
 protected:
  template <typename T>
  static T* child(QWidget& in, const QString& name = {}) {
    for (QWidget* widget : in.findChildren<QWidget*>()) {
      auto* found = dynamic_cast<T*>(widget);
      if (found && (name.isEmpty() || nameOf(*widget) == name)) return found;
    }
    ADD_FAILURE() << "nothing called " << name.toStdString();
    return nullptr;
  }

  static QRect place(const QWidget& widget, const QWidget& in) {
    return {widget.mapTo(&in, QPoint(0, 0)), widget.size()};
  }

  // A view of the size that the panel has on a screen of that visible height.
  std::unique_ptr<ScopesView> viewFor(double visibleHeight) {
    auto view =
        std::make_unique<ScopesView>(state(), state().capture, scopes_geometry::scopeWidth(visibleHeight),
                                     scopes_geometry::legendHeight, *desktop);
    const DesktopRect frame = scopes_geometry::panelFrame({0, 0, 1440, visibleHeight});
    view->resize(static_cast<int>(frame.width), static_cast<int>(frame.height));
    view->show();
    settle();
    return view;
  }

  void press(int key) {
    QWidget* target = QApplication::focusWidget();
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
    QApplication::sendEvent(target, &down);
    QApplication::sendEvent(target, &up);
    settle();
  }

  std::unique_ptr<desktop::Desktop> desktop = std::move(*desktop::Desktop::open());
  hotkeys::HotKeys hotKeys{*desktop};
  HotKey::Installation shortcut{{.settings = settings, .hotKeys = hotKeys}};
};

TEST_F(ScopesPanelTest, thePanelStandsAtTheRightEdgeOfWhatBarsLeave) {
  const auto frame = [](double height) { return scopes_geometry::panelFrame({100, 40, 1000, height}); };
  EXPECT_DOUBLE_EQ(scopes_geometry::scopeWidth(1000), 328);
  EXPECT_NEAR(frame(1000).height, 823.333, 0.001);
  EXPECT_DOUBLE_EQ(frame(1000).maxX(), 1100);
  EXPECT_DOUBLE_EQ(frame(1000).midY(), 540);
  EXPECT_DOUBLE_EQ(scopes_geometry::scopeWidth(600), 160.5);
  EXPECT_DOUBLE_EQ(frame(600).height, 600);
  EXPECT_DOUBLE_EQ(scopes_geometry::scopeWidth(500), 160);
  EXPECT_DOUBLE_EQ(frame(500).height, 500);
}

class ScopesLayoutTest : public ScopesPanelTest, public testing::WithParamInterface<double> {};

TEST_P(ScopesLayoutTest, everyPieceHasItsPlace) {
  state().loupeFrameChanged({10, 10, 300.7, 200.2});
  const std::unique_ptr<ScopesView> view = viewFor(GetParam());
  const int side = roundHalfAway(scopes_geometry::scopeWidth(GetParam()));
  int y = 22;
  const auto at = [&](const QWidget& widget) { return place(widget, *view); };

  const QRect title = at(*child<Label>(*view, "VELICOR"));
  EXPECT_EQ(title.top(), y + 6);
  EXPECT_EQ(title.left() + title.width() / 2, 180);
  EXPECT_EQ(at(*child<controls::PlainButton>(*view, "Hide the scopes panel")), QRect(324, y + 2, 20, 20));
  y = title.bottom() + 1 + 16;

  const auto* tabs = child<ModeTabs>(*view);
  int x = 16;
  for (const Mode mode : MetalProcessor::allModes) {
    const QRect tab = at(tabs->tab(mode));
    EXPECT_EQ(tab.topLeft(), QPoint(x, y));
    EXPECT_NEAR(tab.width(), 328 / 3.0, 1);
    x = tab.right() + 1;
    EXPECT_EQ(tab.bottom() + 1 + 10, at(*tabs).bottom() + 1);
  }
  EXPECT_EQ(x, 344);
  y = at(*tabs).bottom() + 1;

  std::vector<QRect> lines;
  for (QWidget* widget : view->findChildren<QWidget*>()) {
    if (dynamic_cast<controls::Hairline*>(widget) && widget->isVisible()) lines.push_back(at(*widget));
  }
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0], QRect(16, y, 328, 1));
  y += 1 + 12;

  const QRect region = at(*child<Label>(*view, QStringLiteral("300 × 200")));
  const QRect lock = at(*child<controls::Switch>(*view, "Lock"));
  EXPECT_EQ(lock.right() + 1, 344);
  EXPECT_NEAR(lock.center().y(), region.center().y(), 1);
  EXPECT_EQ(std::min(lock.top(), region.top()), y);
  y = std::max(lock.bottom(), region.bottom()) + 1 + 10;

  const QRect slider = at(*child<controls::MiniSlider>(*view, "Overlay opacity"));
  const QRect percentage = at(*child<Label>(*view, "100%"));
  EXPECT_EQ(slider.top(), y);
  EXPECT_EQ(percentage.width(), 34);
  EXPECT_EQ(percentage.right() + 1, 344);
  EXPECT_EQ(percentage.left(), slider.right() + 1 + 10);
  y = slider.bottom() + 1 + 10;

  const QRect picker = at(*child<controls::SegmentedPicker>(*view, "Frames per second"));
  const QRect fps = at(*child<Label>(*view, "fps"));
  EXPECT_EQ(picker.top(), y);
  EXPECT_EQ(fps.left(), picker.right() + 1 + 10);
  EXPECT_EQ(fps.right() + 1, 344);
  y = picker.bottom() + 1 + 12;
  EXPECT_EQ(lines[1], QRect(16, y, 328, 1));
  y += 1 + 14;

  const QRect vectorscope = at(*child<VectorscopeGraticule>(*view));
  EXPECT_EQ(vectorscope, QRect(16 + (328 - side) / 2, y, side, side));
  y += side + 14;
  const QRect parade = at(*child<ParadeGraticule>(*view));
  EXPECT_EQ(parade, QRect(vectorscope.left(), y, side, roundHalfAway(side / 3.0)));
  y = parade.bottom() + 1 + 14;
  EXPECT_EQ(lines[2], QRect(16, y, 328, 1));
  const QRect editor = at(*child<PaletteEditor>(*view));
  EXPECT_EQ(editor.topLeft(), QPoint(16, y + 1));
  y = editor.bottom() + 1;
  EXPECT_EQ(lines[3], QRect(16, y, 328, 1));
  y += 1 + 12;
  EXPECT_EQ(at(*child<LegendView>(*view)), QRect(16, y, 328, 34));
  y += 34 + 6;
  const QRect hint = at(*child<Label>(*view, QStringLiteral("⌃⌥⌘S  hide to menu bar")));
  EXPECT_EQ(hint.topLeft(), QPoint(16, y));
  EXPECT_EQ(hint.width(), 328);

  const bool fits = view->height() >= hint.bottom() + 1 + 12;
  EXPECT_EQ(fits, GetParam() > 500) << "the lower part scrolls";
  EXPECT_EQ(child<MoreBelow>(*view)->isVisible(), !fits);
  state().setMode(Mode::original);
  settle();
  EXPECT_EQ(at(*child<LegendView>(*view)).top(), lines[2].bottom() + 1 + 12) << "one line, and no editor";
}

INSTANTIATE_TEST_SUITE_P(VisibleHeights, ScopesLayoutTest, testing::Values(1000.0, 600.0, 500.0),
                         [](const auto& test) { return std::to_string(static_cast<int>(test.param)); });

TEST_F(ScopesPanelTest, everyControlIsReachedByTheKeyboardAndComesIntoSight) {
  state().setMode(Mode::exposure);
  ScopesPanelController controller(state(), *desktop);
  QWidget& window = controller.panel().window();
  controller.panel().setFrame({900, 200, 360, 500});
  controller.panel().orderFront();
  controller.panel().makeKey();
  ASSERT_TRUE(waitUntil([&] { return window.isActiveWindow(); }));
  settle();

  EXPECT_EQ(QApplication::focusWidget(), &controller.view()) << "no control before the user turns to one";
  press(Qt::Key_Tab);
  std::vector<QWidget*> visited;
  while (std::ranges::count(visited, QApplication::focusWidget()) == 0 && visited.size() < 50) {
    QWidget* focused = QApplication::focusWidget();
    ASSERT_NE(focused, nullptr);
    visited.push_back(focused);
    EXPECT_EQ(focused->visibleRegion().boundingRect(), focused->rect()) << nameOf(*focused).toStdString();
    // The colours come to light, and with them eight wells.
    if (nameOf(*focused).contains("CHANGE COLORS")) {
      press(Qt::Key_Space);
      const auto* editor = child<PaletteEditor>(window);
      const auto* last = child<Label>(window, "100%  clip");
      ASSERT_TRUE(waitUntil([&] { return place(*last, *editor).bottom() + 4 + 8 < editor->height(); }));
    }
    press(Qt::Key_Tab);
  }
  int controls = 0;
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    if (dynamic_cast<controls::Control*>(widget) && widget->isVisible()) ++controls;
  }
  EXPECT_EQ(static_cast<int>(visited.size()), controls);
  EXPECT_GE(controls, 1 + 3 + 3 + 1 + 8 + 1) << "hide, tabs, rows, editor, wells, close";
}

TEST_F(ScopesPanelTest, showsTheStateAndWritesToItOnly) {
  ScopesPanelController controller(state(), *desktop);
  ScopesView& view = controller.view();
  controller.panel().orderFront();
  for (const auto& [opacity, text] :
       {std::pair(0.999, "99%"), std::pair(0.755, "75%"), std::pair(1.0, "100%")}) {
    state().setOpacity(opacity);
    settle();
    EXPECT_NE(child<Label>(view, text), nullptr);
  }
  int toggles = 0;
  state().togglePanel = [&] { ++toggles; };
  child<controls::PlainButton>(view, "Hide the scopes panel")->click();
  child<controls::PlainButton>(view, "Exposure")->click();
  child<controls::Switch>(view)->click();
  child<controls::SegmentedPicker>(view)->setAccessibleValue(2);
  child<controls::MiniSlider>(view)->setAccessibleValue(0.25);
  settle();
  EXPECT_EQ(toggles, 1);
  EXPECT_EQ(state().mode(), Mode::exposure);
  EXPECT_TRUE(state().locked());
  EXPECT_EQ(state().fps(), 30);
  EXPECT_DOUBLE_EQ(state().opacity(), 0.25);
  EXPECT_EQ(child<LegendView>(view)->mode(), Mode::exposure);
  EXPECT_EQ(child<PaletteEditor>(view)->mode(), Mode::exposure);
}

TEST_F(ScopesPanelTest, aFailingCaptureSaysSoUntilItWorksAgain) {
  ScopesPanelController controller(state(), *desktop);
  controller.panel().orderFront();
  auto* button = child<controls::PushButton>(controller.view(), "Open Screen Recording Settings");
  settle();
  EXPECT_FALSE(button->isVisible());
  service->access = false;
  service->starts.push_back(failure("test", 1, "no"));
  state().loupeFrameChanged({100, 100, 40, 30});
  settle();
  ASSERT_TRUE(state().capture.lastError());
  EXPECT_TRUE(waitUntil([&] { return button->visibleRegion().boundingRect() == button->rect(); }))
      << "in sight";
  EXPECT_NE(child<Label>(controller.view(), QString::fromStdString(*state().capture.lastError())), nullptr);
  service->access = true;
  state().loupeFrameChanged({100, 100, 40, 30});
  settle();
  EXPECT_FALSE(state().capture.lastError());
  EXPECT_FALSE(button->isVisible());
}

TEST_F(ScopesPanelTest, onlyScopesInSightAreDrawn) {
  const std::unique_ptr<ScopesView> view = viewFor(500);
  std::vector<LiveTextureView*> scopes;
  for (QWidget* widget : view->findChildren<QWidget*>()) {
    if (auto* live = dynamic_cast<LiveTextureView*>(widget)) scopes.push_back(live);
  }
  ASSERT_EQ(scopes.size(), 2U);
  const auto seen = [&] { return std::pair(scopes[0]->canBeSeen(), scopes[1]->canBeSeen()); };
  EXPECT_EQ(seen(), std::pair(true, true));
  QScrollBar* bar = view->findChild<QScrollArea*>()->verticalScrollBar();
  view->resize(360, 360);
  settle();
  EXPECT_EQ(seen(), std::pair(true, false));
  EXPECT_TRUE(child<MoreBelow>(*view)->isVisible());
  bar->setValue(bar->maximum());
  settle();
  EXPECT_EQ(seen(), std::pair(false, true));
  EXPECT_FALSE(child<MoreBelow>(*view)->isVisible());
}

}  // namespace
}  // namespace velicor
