#include "platform/desktop/managed_visibility.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QWidget>

#include "platform/desktop/display_server.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/x11/properties.h"

namespace velicor::desktop {

namespace {

// Managers answer within milliseconds unless the machine is very busy.
constexpr auto longestWait = std::chrono::milliseconds(500);

constexpr std::uint32_t withdrawnState = 0;
constexpr std::uint32_t iconicState = 3;

}  // namespace

ManagedVisibility::ManagedVisibility(DisplayServer& server, QWidget& window,
                                     std::function<void(Standing)> apply)
    : server_(server), window_(toolkit::identifierOf(window)), apply_(std::move(apply)) {
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(server_.raw(), window_, XCB_CW_EVENT_MASK, &mask);
  patience_.setSingleShot(true);
  patience_.setInterval(longestWait);
  QObject::connect(&patience_, &QTimer::timeout, &patience_, [this] { losePatience(); });
  events_ = server_.event.subscribe([this](const ServerEvent& event) {
    if (event.type() != XCB_PROPERTY_NOTIFY) return;
    const auto& notify = event.as<xcb_property_notify_event_t>();
    if (notify.window == window_ && notify.atom == server_.atom(x11::Atom::wmState)) followState();
  });
}

void ManagedVisibility::followState() {
  const auto state = x11::propertyNumbers(server_.connection(), window_, x11::Atom::wmState);
  minimised_ = applied_ == Standing::managed && !state.empty() && state.front() == iconicState;
  if (patience_.isActive() && isWithdrawn() == (applied_ == Standing::hidden)) proceed();
}

void ManagedVisibility::request(bool shown) {
  if (shown == (wanted_ == Standing::hidden)) {
    wanted_ = !shown ? Standing::hidden : managerKeepsOrder() ? Standing::managed : Standing::lifted;
  }
  if (std::exchange(minimised_, false) && shown) return toolkit::map(window_);
  if (!patience_.isActive()) step();
}

bool ManagedVisibility::isKept() const {
  return wanted_ == Standing::managed && applied_ == wanted_ && !minimised_ && !patience_.isActive();
}

void ManagedVisibility::lift() {
  if (!isKept()) return;
  wanted_ = Standing::lifted;
  step();
}

void ManagedVisibility::noteHidden() {
  if (!applying_) wanted_ = applied_ = Standing::hidden;
}

void ManagedVisibility::proceed() {
  patience_.stop();
  if (applied_ == Standing::managed && onTaken) onTaken();
  step();
}

void ManagedVisibility::step() {
  while (wanted_ != applied_ && !patience_.isActive()) {
    const Standing before =
        std::exchange(applied_, applied_ == Standing::hidden ? wanted_ : Standing::hidden);
    repeated_ = false;
    apply(applied_);
    const bool concernsManager = before == Standing::managed || applied_ == Standing::managed;
    if (concernsManager && hasManager()) patience_.start();
  }
}

void ManagedVisibility::apply(Standing standing) {
  applying_ = true;
  apply_(standing);
  applying_ = false;
}

void ManagedVisibility::losePatience() {
  const bool ignored = isWithdrawn() != (applied_ == Standing::hidden);
  if (wanted_ == applied_ && ignored && !std::exchange(repeated_, true)) return repeat();
  step();
}

void ManagedVisibility::repeat() {
  if (applied_ != Standing::hidden) {
    apply(Standing::hidden);
    // The frame of an earlier showing hears of no further one.
    toolkit::returnToRoot(window_);
    apply(applied_);
  } else {
    toolkit::withdraw(window_);
  }
  patience_.start();
}

bool ManagedVisibility::hasManager() {
  return !x11::propertyNumbers(server_.connection(), server_.root(), x11::Atom::netSupportingWmCheck).empty();
}

bool ManagedVisibility::managerKeepsOrder() {
  const auto sign =
      x11::propertyNumbers(server_.connection(), server_.root(), x11::Atom::netSupportingWmCheck);
  if (sign.empty()) return false;
  // While it composes, it paints all that bypasses it above all that it manages, whatever the order of the
  // windows.
  if (x11::propertyText(server_.connection(), sign.front(), x11::Atom::netWmName) == "KWin") return false;
  const auto supported = x11::propertyNumbers(server_.connection(), server_.root(), x11::Atom::netSupported);
  return std::ranges::count(supported, server_.atom(x11::Atom::netWmStateAbove)) > 0;
}

// A window that can be seen is not withdrawn, even where the manager does not keep WM_STATE.
bool ManagedVisibility::isWithdrawn() {
  const auto state = x11::propertyNumbers(server_.connection(), window_, x11::Atom::wmState);
  return state.empty() ? !toolkit::isViewable(window_) : state.front() == withdrawnState;
}

}  // namespace velicor::desktop
