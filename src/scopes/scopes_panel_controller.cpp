#include "scopes/scopes_panel_controller.h"

#include <algorithm>
#include <utility>

#include <QGridLayout>

#include "platform/base/product.h"
#include "platform/desktop/application.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/panel_ground.h"
#include "platform/desktop/reach.h"
#include "scopes/panel_title_strip.h"
#include "scopes/scopes_geometry.h"
#include "scopes/scopes_view.h"

namespace velicor {

namespace {

constexpr int scopesLevel = 4;

class ScopesPanel : public desktop::Panel {
 public:
  using desktop::Panel::Panel;
  bool canBecomeKey() const override { return true; }
};

// Without a screen, what the smallest scopes need.
DesktopRect visibleFrameFor(const desktop::ScreenList& list) {
  const auto screen = desktop::mainOrFirst(list);
  return screen ? screen->visibleFrame
                : DesktopRect{0, 0, scopes_geometry::panelWidth, scopes_geometry::smallestHeight()};
}

}  // namespace

ScopesPanelController::ScopesPanelController(AppState& state, desktop::Desktop& desktop)
    : state_(state),
      desktop_(desktop),
      panel_(std::make_unique<ScopesPanel>(desktop, desktop::PanelKind::managed,
                                           scopes_geometry::panelFrame(visibleFrameFor(desktop.screens())))),
      screens_(desktop.screens().screens()) {
  panel_->setTitle(std::string(product::name));
  panel_->setLevel(scopesLevel);
  panel_->setMovableByBackground(true);
  fill(visibleFrameFor(desktop_.screens()).height);
  panel_->setDelegate(this);
  screensChanged_ = desktop_.screens().changed.subscribe([this] { followScreens(); });
}

ScopesPanelController::~ScopesPanelController() { panel_->setDelegate(nullptr); }

// The title strip comes last on the keyboard's way, and lies over the view's upper padding.
std::unique_ptr<QWidget> ScopesPanelController::makeContent(double visibleHeight) {
  auto ground = std::make_unique<desktop::PanelGround>(desktop_);
  view_ = new ScopesView(state_, state_.capture, scopes_geometry::scopeWidth(visibleHeight),
                         scopes_geometry::legendHeight, desktop_);
  titleStrip_ = new PanelTitleStrip;
  titleStrip_->onClose = [this] { static_cast<void>(windowShouldClose(*panel_)); };
  if (openMenu_) titleStrip_->setMenu(openMenu_);
  auto* layers = new QGridLayout(ground.get());
  layers->setContentsMargins({});
  layers->addWidget(view_, 0, 0);
  layers->addWidget(titleStrip_, 0, 0, Qt::AlignTop);
  return ground;
}

void ScopesPanelController::setMenu(std::function<void(QPoint corner)> open) {
  openMenu_ = std::move(open);
  titleStrip_->setMenu(openMenu_);
}

bool ScopesPanelController::windowShouldClose(desktop::Panel&) {
  desktop::terminate();
  return false;
}

void ScopesPanelController::fill(double visibleHeight) {
  panel_->setContentView(makeContent(visibleHeight));
  // Until the user turns to a control, keys mean none of them.
  view_->setFocus();
}

void ScopesPanelController::place(const DesktopRect& visible) {
  fill(visible.height);
  panel_->setFrame(scopes_geometry::panelFrame(visible));
}

void ScopesPanelController::followScreens() {
  if (desktop_.screens().screens().empty()) return;
  const std::vector<desktop::Screen> before = std::exchange(screens_, desktop_.screens().screens());
  const auto shown = [this](const desktop::Screen& screen) {
    return panel_->frame().intersection(screen.frame).area();
  };
  const bool reachable = desktop::isWithinReach(panel_->frame(), screens_);
  if (before.empty() || !reachable) return place(visibleFrameFor(desktop_.screens()));
  const desktop::Screen& home = *std::ranges::max_element(screens_, {}, shown);
  const auto was = std::ranges::find(before, home.displayID, &desktop::Screen::displayID);
  const bool rescaled = was != before.end() && was->backingScaleFactor != home.backingScaleFactor;
  if (rescaled || panel_->frame().height > home.visibleFrame.height) place(home.visibleFrame);
}

}  // namespace velicor
