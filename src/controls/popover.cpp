#include "controls/popover.h"

#include <QApplication>
#include <QEvent>

#include "controls/popover_ground.h"
#include "controls/popover_placement.h"
#include "platform/desktop/compositor.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/panel.h"
#include "platform/desktop/pointer.h"
#include "platform/desktop/toolkit_window.h"

namespace velicor::controls {

namespace {

DeviceRect deviceRectOf(const QWidget& widget) {
  const DevicePoint corner = desktop::toolkit::devicePoint(widget.mapToGlobal(QPointF(0, 0)));
  const double scale = widget.devicePixelRatioF();
  return {corner.x, corner.y, roundHalfAway(widget.width() * scale), roundHalfAway(widget.height() * scale)};
}

}  // namespace

class Popover::Window : public desktop::Panel {
 public:
  explicit Window(desktop::Desktop& desktop) : Panel(desktop, desktop::PanelKind::bypassing, {0, 0, 100, 100}) {
    setLevel(Popover::level);
  }
  bool canBecomeKey() const override { return true; }
};

Popover::Popover(desktop::Desktop& desktop, QWidget& anchor, std::unique_ptr<QWidget> content)
    : desktop_(desktop), anchor_(&anchor), panel_(std::make_unique<Window>(desktop)) {
  auto ground = std::make_unique<PopoverGround>(desktop, std::move(content));
  ground_ = ground.get();
  ground_->onEscape = [this] { dismiss(); };
  panel_->setContentView(std::move(ground));
}

Popover::~Popover() { hide(); }

desktop::Panel& Popover::panel() const { return *panel_; }

bool Popover::isShown() const { return panel_->isVisible(); }

void Popover::show(Qt::FocusReason reason) {
  if (!anchor_) return;
  place();
  panel_->orderFront();
  panel_->makeKey();
  activate();
  ground_->focusFirst(reason);
  qApp->installEventFilter(this);
  whileShown_.push_back(desktop_.pointer().observePressesElsewhere([this] { dismiss(); }));
  whileShown_.push_back(desktop_.screens().changed.subscribe([this] { place(); }));
}

// Where nobody took the keyboard since the popover had it last, Qt sees no change of the focus and would leave the
// window inactive. QWidget::activateWindow, which Qt 6.5 advises instead, asks the X server only, and the X server has
// nothing to change then.
void Popover::activate() {
  QWidget& window = panel_->window();
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  if (QGuiApplication::focusWindow() == window.windowHandle()) QApplication::setActiveWindow(&window);
#pragma GCC diagnostic pop
}

void Popover::hide() {
  qApp->removeEventFilter(this);
  whileShown_.clear();
  panel_->orderOut();
}

void Popover::dismiss() {
  if (!isShown()) return;
  hide();
  if (onDismiss) onDismiss();
}

void Popover::place() {
  const auto screens = desktop_.screens().screens();
  if (!anchor_ || screens.empty()) return;
  const desktop::ScreenLayout& layout = desktop_.screens().layout();
  const DeviceRect anchor = deviceRectOf(*anchor_);
  const DeviceRect screen = layout.toDevice(screens.at(layout.monitorAt(anchor)).visibleFrame);
  const double scale = anchor_->devicePixelRatioF();
  const QSize size = ground_->sizeHint();
  const PopoverPlacement placement =
      placePopover(anchor, roundHalfAway(size.width() * scale), roundHalfAway(size.height() * scale), screen,
                   roundHalfAway(PopoverGround::shoulder * scale));
  panel_->window().resize(size);
  panel_->setFrame(layout.toDesktop(placement.window));
  ground_->setArrow(placement.below, placement.tip / scale);
}

void Popover::followAnchor() {
  if (!isShown()) return;
  anchor_->visibleRegion().isEmpty() ? dismiss() : place();
}

bool Popover::isAnchor(const QWidget& widget) const {
  return anchor_ && (&widget == anchor_ || anchor_->isAncestorOf(&widget));
}

// A click on the anchor that dismisses must not open the popover again.
bool Popover::eventFilter(QObject* watched, QEvent* event) {
  if (!watched->isWidgetType()) return false;
  const auto& widget = static_cast<QWidget&>(*watched);
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
      if (widget.window() == &panel_->window()) return false;
      dismiss();
      return isAnchor(widget);
    case QEvent::Hide:
      if (&widget == anchor_) dismiss();
      return false;
    case QEvent::Move:
    case QEvent::Resize:
      if (anchor_ && (&widget == anchor_ || widget.isAncestorOf(anchor_))) followAnchor();
      return false;
    default:
      return false;
  }
}

}  // namespace velicor::controls
