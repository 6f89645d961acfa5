#include "platform/desktop/panel.h"

#include <chrono>
#include <utility>

#include <QCloseEvent>
#include <QEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include "platform/desktop/desktop.h"
#include "platform/desktop/managed_visibility.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/panel_drag.h"
#include "platform/desktop/pointer.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/desktop/window_stack.h"

namespace velicor::desktop {

namespace {

constexpr auto settlingTime = std::chrono::milliseconds(400);
constexpr std::uint32_t presentTime = 0;  // in requests: when the server gets to them

// Managers may still be about to raise it.
constexpr auto longestOutOfSight = std::chrono::milliseconds(150);

Qt::WindowFlags flagsOf(PanelKind kind) {
  const Qt::WindowFlags common = Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint;
  if (kind == PanelKind::bypassing) return Qt::Window | common | Qt::X11BypassWindowManagerHint;
  return Qt::Tool | common | Qt::WindowStaysOnTopHint;
}

// The toolkit's whole-point idea of a place; its screens keep their device origin and scale distances from
// it.
QRect toolkitRect(const DeviceRect& rect) {
  const QScreen* screen = toolkit::screenAt({rect.x, rect.y});
  if (!screen) screen = qGuiApp->primaryScreen();
  if (!screen) return {rect.x, rect.y, rect.width, rect.height};
  const double scale = screen->devicePixelRatio();
  const QPoint origin = screen->geometry().topLeft();
  return {roundHalfAway(origin.x() + (rect.x - origin.x()) / scale),
          roundHalfAway(origin.y() + (rect.y - origin.y()) / scale), roundHalfAway(rect.width / scale),
          roundHalfAway(rect.height / scale)};
}

}  // namespace

// The toolkit's window of a panel.
class Panel::Carrier : public QWidget {
 public:
  Carrier(Panel& owner, PanelKind kind) : QWidget(nullptr, flagsOf(kind)), panel(owner) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setMouseTracking(true);
    outOfSight.setSingleShot(true);
    outOfSight.setInterval(longestOutOfSight);
    settling.setSingleShot(true);
    settling.setInterval(settlingTime);
    settling.callOnTimeout(this, [this] { panel.settle(); });
  }

  Panel& panel;
  QTimer outOfSight;
  QTimer settling;  // the manager has been asked for another frame
  std::uint32_t keyTime = 0;  // when the keyboard was taken, by the server's clock
  QWidget* content = nullptr;
  std::optional<PanelDrag> drag;  // where the background moves the panel

 protected:
  void mousePressEvent(QMouseEvent* event) override {
    if (drag) drag->press(*event);
  }
  void mouseMoveEvent(QMouseEvent* event) override {
    if (drag) drag->move(*event);
  }
  void mouseReleaseEvent(QMouseEvent*) override {
    if (drag) drag->release();
  }
  // The way back for those without a mouse: their manager may think that they had the keyboard all the time.
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() != Qt::Key_Escape || !panel.lifted_) return QWidget::keyPressEvent(event);
    panel.resignKey();
  }
  void closeEvent(QCloseEvent* event) override {
    event->setAccepted(!panel.delegate_ || panel.delegate_->windowShouldClose(panel));
  }

  // Nobody else directs the keyboard at a window that bypasses the manager.
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::MouseButtonPress && panel.lifted_) panel.makeKey();
    return QWidget::eventFilter(watched, event);
  }

  bool event(QEvent* event) override {
    const bool handled = QWidget::event(event);
    switch (event->type()) {
      case QEvent::Resize:
        if (content) content->setGeometry(rect());
        noteGeometry();
        break;
      case QEvent::Move:
        noteGeometry();
        break;
      case QEvent::Hide:
        // The toolkit says the same when the window manager minimises the window, of its own accord.
        if (panel.visibility_ && !event->spontaneous()) panel.visibility_->noteHidden();
        break;
      case QEvent::WindowActivate:
        panel.key_ = panel.canBecomeKey();
        break;
      case QEvent::WindowDeactivate:
        panel.key_ = false;
        break;
      default:
        break;
    }
    return handled;
  }

 private:
  // A manager that is about to show the window puts it into a frame first, and that in its place later: until the
  // window can be seen, its place means nothing.
  void noteGeometry() {
    if (panel.isBypassing() || isViewable()) return panel.movedByOthers();
    QTimer::singleShot(placing, this, [this] {
      if (isViewable()) panel.movedByOthers();
    });
  }

  bool isViewable() { return toolkit::isViewable(toolkit::identifierOf(*this)); }

  static constexpr auto placing = std::chrono::milliseconds(100);
};

Panel::Panel(Desktop& desktop, PanelKind kind, const DesktopRect& frame)
    : desktop_(desktop), kind_(kind), carrier_(std::make_unique<Carrier>(*this, kind)), frame_(frame) {
  deviceFrame_ = desktop_.screens().layout().toDevice(frame_);
  carrier_->setGeometry(toolkitRect(deviceFrame_));
  const WindowId window = toolkit::identifierOf(*carrier_);
  toolkit::removeShadow(window);
  toolkit::configure(window, deviceFrame_);
  toolkit::setLevel(*carrier_, 0);
  if (kind_ == PanelKind::managed) {
    visibility_ = std::make_unique<ManagedVisibility>(desktop_.server(), *carrier_,
                                                      [this](Standing standing) { apply(standing); });
    visibility_->onTaken = [this] {
      toolkit::joinAllDesktops(toolkit::identifierOf(*carrier_));
      keepInSight();
    };
    carrier_->windowHandle()->installEventFilter(carrier_.get());
    carrier_->outOfSight.callOnTimeout(carrier_.get(), [this] { visibility_->lift(); });
    windowsChanged_ = desktop_.windows().changed.subscribe([this] { keepInSight(); });
  }
  screensChanged_ = desktop_.screens().changed.subscribe([this] { followScreens(); });
}

Panel::~Panel() { resignKey(); }

Panel* Panel::of(const QWidget* widget) {
  const auto* carrier = widget ? dynamic_cast<const Carrier*>(widget->window()) : nullptr;
  return carrier ? &carrier->panel : nullptr;
}

QWidget& Panel::window() const { return *carrier_; }

void Panel::setFrame(DesktopRect frame) {
  const DesktopRect before = std::exchange(frame_, frame);
  applyFrame();
  noteFrame(before);
}

void Panel::applyFrame() {
  const DeviceRect wanted = desktop_.screens().layout().toDevice(frame_);
  if (wanted == deviceFrame_) return;
  deviceFrame_ = wanted;
  const WindowId window = toolkit::identifierOf(*carrier_);
  if (kind_ == PanelKind::managed) {
    toolkit::fixSize(window, deviceFrame_);
    carrier_->settling.start();
  }
  toolkit::configure(window, deviceFrame_);
  // The window manager is told the toolkit's idea of the place when the window is shown.
  if (kind_ == PanelKind::managed && !carrier_->isVisible()) carrier_->setGeometry(toolkitRect(deviceFrame_));
}

// Places count in points, but where a point has other pixels now, a window stays over what it was over.
void Panel::followScreens() {
  const ScreenLayout& layout = desktop_.screens().layout();
  if (layout.toDevice(frame_) == deviceFrame_) return;
  if (kind_ == PanelKind::managed) return measureAnew();
  const DesktopRect there = layout.toDesktop(deviceFrame_);
  const bool rescaled = roundHalfAway(frame_.width * layout.scaleAt(there)) != deviceFrame_.width;
  if (!rescaled) return applyFrame();
  setFrame({there.midX() - frame_.width / 2, there.midY() - frame_.height / 2, frame_.width, frame_.height});
}

// The manager leaves the window's pixels as they are, which may be another place and size in the plane of points. It is
// asked for another size once, when all others have had their say about the frame: it answers late, and to each request.
void Panel::measureAnew() {
  const DesktopRect there = desktop_.screens().layout().toDesktop(deviceFrame_);
  const DesktopRect before = frame_;
  frame_ = {there.x, there.maxY() - before.height, before.width, before.height};
  QTimer::singleShot(0, carrier_.get(), [this] { applyFrame(); });
  noteFrame(before);
}

void Panel::noteFrame(const DesktopRect& before) {
  const bool moved = before.x != frame_.x || before.y != frame_.y;
  const bool resized = before.width != frame_.width || before.height != frame_.height;
  if (delegate_ && moved) delegate_->windowDidMove(*this);
  if (delegate_ && resized) delegate_->windowDidResize(*this);
}

// The toolkit's news may be older than our last request, so the server is asked: on the same connection, its
// answer is from after that request.
void Panel::movedByOthers() {
  if (!carrier_->isVisible()) return;
  const auto actual = toolkit::geometryOf(toolkit::identifierOf(*carrier_));
  if (!actual || *actual == deviceFrame_) return;
  const bool resized = actual->width != deviceFrame_.width || actual->height != deviceFrame_.height;
  // The manager has moved it before it heard of its new size.
  if (resized && carrier_->settling.isActive()) return;
  deviceFrame_ = *actual;
  const ScreenLayout& layout = desktop_.screens().layout();
  if (!resized && layout.scaleAt(layout.toDesktop(*actual)) != layout.scaleAt(frame_)) return measureAnew();
  const DesktopRect before = std::exchange(frame_, layout.toDesktop(deviceFrame_));
  noteFrame(before);
}

// Whatever the manager has made of it by now holds. The toolkit allows all sizes again when it first hears of a place in
// another scale.
void Panel::settle() {
  movedByOthers();
  toolkit::fixSize(toolkit::identifierOf(*carrier_), deviceFrame_);
}

int Panel::level() const { return toolkit::levelOf(*carrier_); }

void Panel::setLevel(int level) {
  toolkit::setLevel(*carrier_, level);
  desktop_.windows().refreshSoon();
}

void Panel::orderFront() {
  if (!isVisible()) visibility_ ? visibility_->request(true) : apply(Standing::lifted);
  // xfwm4 takes a raise for the wish to have the keyboard.
  const bool standsWell =
      visibility_ && visibility_->isKept() && desktop_.windows().isInFront(toolkit::identifierOf(*carrier_));
  if (!standsWell) carrier_->raise();
  desktop_.windows().refreshSoon();
}

void Panel::orderOut() {
  resignKey();
  keyWhenShown_ = false;
  visibility_ ? visibility_->request(false) : hide();
  desktop_.windows().refreshSoon();
}

void Panel::hide() {
  carrier_->hide();
  toolkit::forgetPicture(*carrier_);
}

void Panel::apply(Standing standing) {
  if (standing == Standing::hidden) {
    keyWhenShown_ = std::exchange(key_, false) && visibility_->isShown();
    return hide();
  }
  if (kind_ == PanelKind::managed) stand(standing == Standing::lifted);
  // Whatever the window manager has made of it before.
  carrier_->setWindowState(carrier_->windowState() & ~Qt::WindowMinimized);
  carrier_->show();
  becameShown();
  if (std::exchange(keyWhenShown_, false)) makeKey();
}

void Panel::stand(bool lifted) {
  const WindowId window = toolkit::identifierOf(*carrier_);
  lifted_ = lifted;
  toolkit::setBypassing(*carrier_, lifted);
  pressesElsewhere_ = {};
  if (!lifted) return toolkit::joinAllDesktops(window);
  // A manager that was slow to let go of it.
  toolkit::returnToRoot(window);
  // Their window manager may think that they had the keyboard all the time.
  pressesElsewhere_ = desktop_.pointer().observePressesElsewhere([this] { resignKey(); });
}

void Panel::keepInSight() {
  const bool lost =
      visibility_->isKept() && desktop_.windows().isOvertopped(toolkit::identifierOf(*carrier_));
  if (!lost) return carrier_->outOfSight.stop();
  if (!carrier_->outOfSight.isActive()) carrier_->outOfSight.start();
}

// The toolkit shows a window with its own idea of the place, and nobody's idea of an input shape.
void Panel::becameShown() {
  const WindowId window = toolkit::identifierOf(*carrier_);
  if (kind_ == PanelKind::managed) toolkit::fixSize(window, deviceFrame_);
  toolkit::configure(window, deviceFrame_);
  toolkit::setClickThrough(window, ignoresMouse_);
}

bool Panel::isVisible() const { return visibility_ ? visibility_->isShown() : carrier_->isVisible(); }

bool Panel::isOccluded() const { return desktop_.windows().isCovered(toolkit::identifierOf(*carrier_)); }

void Panel::setIgnoresMouseEvents(bool ignores) {
  if (ignores == ignoresMouse_) return;
  ignoresMouse_ = ignores;
  if (carrier_->isVisible()) toolkit::setClickThrough(toolkit::identifierOf(*carrier_), ignores);
}

void Panel::setMovableByBackground(bool movable) {
  carrier_->drag.reset();
  if (movable) carrier_->drag.emplace(*this);
}

void Panel::setTitle(const std::string& title) { carrier_->setWindowTitle(QString::fromStdString(title)); }

void Panel::makeKey() {
  if (!canBecomeKey() || !isVisible() || key_) return;
  keyWhenShown_ = !carrier_->isVisible();
  if (keyWhenShown_) return;
  if (!isBypassing()) return carrier_->activateWindow();
  const WindowId window = toolkit::identifierOf(*carrier_);
  const WindowId before = toolkit::focusedWindow();
  if (before != window) keyBefore_ = before;
  takeKeyboard(desktop_.pointer().time());
  // As a manager would.
  if (!key_ && lifted_) takeKeyboard(presentTime);
}

void Panel::takeKeyboard(std::uint32_t time) {
  const WindowId window = toolkit::identifierOf(*carrier_);
  carrier_->keyTime = time;
  toolkit::focus(window, time);
  key_ = toolkit::focusedWindow() == window;
}

void Panel::insistOnKey() {
  makeKey();
  if (key_ || !isBypassing() || !canBecomeKey() || !isVisible()) return;
  takeKeyboard(presentTime);
}

void Panel::resignKey() {
  if (!std::exchange(key_, false) || !isBypassing()) return;
  const WindowId before = std::exchange(keyBefore_, 0);
  // Whoever took the keyboard meanwhile keeps it.
  if (toolkit::focusedWindow() != toolkit::identifierOf(*carrier_)) return;
  // Under the time when it was taken: whatever has been done about the keyboard since then is newer, and stays.
  toolkit::focusIfViewable(before, carrier_->keyTime);
}

void Panel::setCursor(Cursor cursor) {
  if (cursor == cursor_) return;
  cursor_ = cursor;
  carrier_->setCursor(toolkitCursor(cursor));
  // The toolkit applies a widget's cursor when it sees the mouse enter it, which under a changing input shape
  // may come late.
  if (carrier_->windowHandle()) carrier_->windowHandle()->setCursor(toolkitCursor(cursor));
}

void Panel::setContentView(std::unique_ptr<QWidget> view) {
  delete carrier_->content;
  carrier_->content = view.release();
  carrier_->content->setParent(carrier_.get());
  carrier_->content->setGeometry(carrier_->rect());
  carrier_->content->show();
}

}  // namespace velicor::desktop
