#include "platform/desktop/managed_visibility.h"

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
                                     std::function<void(bool shown)> showOrHide)
    : server_(server), window_(toolkit::identifierOf(window)), showOrHide_(std::move(showOrHide)) {
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
  minimised_ = !state.empty() && state.front() == iconicState;
  if (patience_.isActive() && isWithdrawn() != applied_) proceed();
}

void ManagedVisibility::request(bool shown) {
  wanted_ = shown;
  if (std::exchange(minimised_, false) && shown) return toolkit::map(window_);
  if (!patience_.isActive()) step();
}

void ManagedVisibility::noteHidden() {
  if (!applying_) wanted_ = applied_ = false;
}

void ManagedVisibility::proceed() {
  patience_.stop();
  step();
}

void ManagedVisibility::step() {
  if (wanted_ == applied_) return;
  applied_ = wanted_;
  repeated_ = false;
  apply(applied_);
  if (hasManager()) patience_.start();
}

void ManagedVisibility::apply(bool shown) {
  applying_ = true;
  showOrHide_(shown);
  applying_ = false;
}

void ManagedVisibility::losePatience() {
  if (wanted_ == applied_ && isWithdrawn() == applied_ && !std::exchange(repeated_, true)) return repeat();
  step();
}

void ManagedVisibility::repeat() {
  if (applied_) {
    apply(false);
    // The frame of an earlier showing hears of no further one.
    toolkit::returnToRoot(window_);
    apply(true);
  } else {
    toolkit::withdraw(window_);
  }
  patience_.start();
}

bool ManagedVisibility::hasManager() {
  return !x11::propertyNumbers(server_.connection(), server_.root(), x11::Atom::netSupportingWmCheck).empty();
}

// A window that can be seen is not withdrawn, even where the manager does not keep WM_STATE.
bool ManagedVisibility::isWithdrawn() {
  const auto state = x11::propertyNumbers(server_.connection(), window_, x11::Atom::wmState);
  return state.empty() ? !toolkit::isViewable(window_) : state.front() == withdrawnState;
}

}  // namespace velicor::desktop
