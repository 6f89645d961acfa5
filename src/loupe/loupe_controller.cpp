#include "loupe/loupe_controller.h"

#include <algorithm>
#include <utility>

#include <QApplication>

#include "analysis/notification_names.h"
#include "loupe/captured_frame_layer.h"
#include "loupe/loupe_container.h"
#include "loupe/panel_hint.h"
#include "loupe/passthrough_texture_view.h"
#include "platform/base/product.h"
#include "platform/desktop/compositor.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/pointer.h"
#include "platform/desktop/reach.h"
#include "platform/desktop/screen_layout.h"

namespace velicor {

namespace {

constexpr double firstSide = 175;
constexpr int loupeLevel = 3;
constexpr auto hintTime = std::chrono::seconds(3);

DesktopRect centredOn(const DesktopRect& screen, DesktopSize size) {
  return {screen.midX() - size.width / 2, screen.midY() - size.height / 2, size.width, size.height};
}

std::unique_ptr<KeyablePanel> makePanel(desktop::Desktop& desktop) {
  const auto screen = desktop::mainOrFirst(desktop.screens());
  auto panel = std::make_unique<KeyablePanel>(
      desktop, desktop::PanelKind::bypassing,
      centredOn(screen ? screen->frame : DesktopRect{}, {firstSide, firstSide}));
  panel->setLevel(loupeLevel);
  panel->setTitle(std::string(product::name) + " Loupe");
  return panel;
}

QWidget* addContainer(KeyablePanel& panel) {
  auto container = std::make_unique<LoupeContainer>();
  container->setMouseTracking(true);
  QWidget* added = container.get();
  panel.setContentView(std::move(container));
  return added;
}

}  // namespace

LoupeController::LoupeController(std::shared_ptr<MetalProcessor> processor, desktop::Desktop& desktop,
                                 dispatch::Clock& clock)
    : processor_(std::move(processor)),
      desktop_(desktop),
      clock_(clock),
      panel_(makePanel(desktop)),
      container_(addContainer(*panel_)) {
  if (processor_) addPreview();
  addFrameView();
  panel_->setDelegate(this);
  watchMouse();
  watchCompositor();
  watchScreens();
}

LoupeController::~LoupeController() {
  for (Subscription& monitor : mouseMonitors_)
    monitor = {};
  pressesElsewhere_ = {};
  panel_->setDelegate(nullptr);
}

void LoupeController::addPreview() {
  metalView_ = new PassthroughTextureView(processor_->device(), velicorPreviewReady, container_);
  metalView_->setGeometry(container_->rect());
  renderer_ = std::make_shared<MetalTextureView::Renderer>(
      processor_->device(), [processor = processor_] { return processor->preview(); });
  metalView_->setDelegate(renderer_);
  metalView_->show();
}

void LoupeController::addFrameView() {
  frameView_ = new LoupeFrameView(container_->rect(), container_);
  frameView_->onDrag = [this](LoupeFrameView::Zone zone, DesktopSize delta, DesktopRect startFrame) {
    applyDrag(zone, delta, startFrame);
  };
  // What was decided in the middle of a drag was about a window on its way; a mouse that rests asks for nothing more.
  frameView_->onRelease = [this] { updateMousePassthrough(); };
  // The mouse has not moved: the keyboard stays with who is using it.
  frameView_->onKeyRelease = [this] {
    panel_->setIgnoresMouseEvents(!takesMouseAt(desktop_.pointer().position()));
  };
  frameView_->onLeave = [this] { leaveKeyboard(); };
  frameView_->onPanelToggle = [this] {
    if (onPanelToggle) onPanelToggle();
  };
  frameView_->show();
  frameView_->setFocus();
}

void LoupeController::watchMouse() {
  using Over = desktop::Pointer::Over;
  for (const Over over : {Over::otherWindows, Over::ownWindows}) {
    Subscription monitor = desktop_.pointer().observeMotion(over, [this] { updateMousePassthrough(); });
    if (monitor.isActive()) mouseMonitors_.push_back(std::move(monitor));
  }
  // Their window manager may think that they had the keyboard all the time.
  pressesElsewhere_ = desktop_.pointer().observePressesElsewhere([this] {
    if (!cursorInBand_) leaveKeyboard();
  });
}

void LoupeController::watchCompositor() {
  compositorChanged_ = desktop_.compositor().changed.subscribe([this] { followCompositor(); });
  followCompositor();
}

void LoupeController::followCompositor() {
  const bool needed = processor_ && !desktop_.compositor().isPresent();
  if (needed == (capturedFrame_ != nullptr)) return;
  capturedFrame_ = needed ? std::make_unique<CapturedFrameLayer>(processor_, *container_) : nullptr;
  container_->update();
}

LiveTextureView* LoupeController::capturedFrameView() {
  return capturedFrame_ ? &capturedFrame_->view() : nullptr;
}

// The panel has subscribed before: by now it stands where its frame is on the new screens.
void LoupeController::watchScreens() {
  screens_ = desktop_.screens().screens();
  screensChanged_ = desktop_.screens().changed.subscribe([this] { followScreens(); });
}

void LoupeController::followScreens() {
  hidePanelHint();
  const DesktopRect frame = panel_->frame();
  if (const auto screen = desktop::mainOrFirst(desktop_.screens())) {
    const std::vector<desktop::Screen> before = std::exchange(screens_, desktop_.screens().screens());
    const bool stranded = before.empty() || (desktop::isWithinReach(frame, before) && !desktop::isWithinReach(frame, screens_));
    if (stranded) panel_->setFrame(centredOn(screen->frame, {frame.width, frame.height}));
  }
  // A frame that is new has been reported already.
  if (panel_->frame() == frame) reportFrame();
}

void LoupeController::applyDrag(LoupeFrameView::Zone zone, DesktopSize delta, const DesktopRect& startFrame) {
  panel_->setFrame(loupe_geometry::draggedFrame(zone, delta, startFrame));
  reportFrame();
}

// Of the screen that has most of the loupe, else of the main one.
std::optional<DesktopRect> LoupeController::visibleFrame() const {
  const std::vector<desktop::Screen> all = desktop_.screens().screens();
  const auto shown = [this](const desktop::Screen& screen) {
    return panel_->frame().intersection(screen.frame).area();
  };
  const auto most = std::ranges::max_element(all, {}, shown);
  if (most != all.end() && shown(*most) > 0) return most->visibleFrame;
  const auto main = desktop_.screens().mainScreen();
  return main ? std::optional(main->visibleFrame) : std::nullopt;
}

void LoupeController::showPanelHint() {
  const DesktopRect chip = desktop::toDesktop(frameView_->panelChip(), panel_->frame());
  hidePanelHint();
  hintPanel_ = std::make_shared<PanelHint>(desktop_, chip, visibleFrame());
  clock_.callAfter(hintTime, [this, waiting = std::weak_ptr(hintPanel_)] {
    // It goes with the controller, and with the next hint.
    const auto hint = waiting.lock();
    if (!hint) return;
    hint->fadeOut([this, waiting] {
      if (!waiting.expired()) hidePanelHint();
    });
  });
}

void LoupeController::hidePanelHint() { hintPanel_.reset(); }

void LoupeController::windowDidMove(desktop::Panel&) { reportFrame(); }

void LoupeController::windowDidResize(desktop::Panel&) { reportFrame(); }

void LoupeController::reportFrame() {
  if (onFrameChange) onFrameChange(panel_->frame());
}

bool LoupeController::takesMouseAt(DesktopPoint mouse) const {
  return loupe_geometry::takesMouse(mouse, panel_->frame(), frameView_->isLocked,
                                    frameView_->isScreenPointOverPanelChip(mouse));
}

void LoupeController::updateMousePassthrough() {
  // An open menu has the mouse, and would close when the keyboard moves.
  if (QApplication::activePopupWidget()) return;
  const DesktopPoint mouse = desktop_.pointer().position();
  const bool takes = takesMouseAt(mouse);
  panel_->setIgnoresMouseEvents(!takes);
  if (takes) {
    enterBand(mouse);
  } else {
    leaveBand();
  }
}

void LoupeController::enterBand(DesktopPoint mouse) {
  if (!panel_->isKey()) panel_->makeKey();
  panel_->setCursor(frameView_->cursorAtScreenPoint(mouse));
  cursorInBand_ = true;
}

void LoupeController::takeKeyboard() {
  if (!panel_->isVisible()) return;
  panel_->insistOnKey();
  frameView_->setFocus();
  frameView_->setUsesKeys(true);
}

void LoupeController::leaveKeyboard() { panel_->resignKey(); }

void LoupeController::leaveBand() {
  if (!std::exchange(cursorInBand_, false)) return;
  panel_->setCursor(desktop::Cursor::arrow);
  if (panel_->isKey()) panel_->resignKey();
}

}  // namespace velicor
