#include "platform/desktop/pointer.h"

#include <array>
#include <utility>

#include <xcb/xinput.h>
#include <QMouseEvent>

#include "platform/desktop/display_server.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/toolkit_window.h"
#include "platform/desktop/window_stack.h"
#include "platform/log/log.h"

namespace velicor::desktop {

namespace {

constexpr int shortestInterval = 16;  // milliseconds between two reports
constexpr int realButtons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
constexpr int anyButton =
    XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3 | XCB_BUTTON_MASK_4 | XCB_BUTTON_MASK_5;

constexpr std::uint32_t watchedEvents = XCB_INPUT_XI_EVENT_MASK_RAW_MOTION |
                                        XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                                        XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
constexpr std::uint32_t lastRealButton = 3;  // those after it are wheels

// Raw events reach every client that asks, also while another program holds the pointer in a grab.
void selectRawEvents(DisplayServer& server, bool on) {
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } const request{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                  on ? watchedEvents : 0U};
  xcb_input_xi_select_events(server.raw(), server.root(), 1, &request.head);
}

}  // namespace

Pointer::Pointer(DisplayServer& server, const MonitorScreens& screens, const WindowStack& windows)
    : server_(server), screens_(screens), windows_(windows) {
  if (!server_.connection().extensions().input.atLeast(2, 1)) {
    log::Logger("desktop").error("mouse motion goes unnoticed: the X server has no XInput 2.1");
    return;
  }
  selectRawEvents(server_, true);
  events_ = server_.event.subscribe([this](const ServerEvent& event) { handle(event); });
  due_.setSingleShot(true);
  due_.setTimerType(Qt::PreciseTimer);
  due_.callOnTimeout(&due_, [this] { report(); });
}

DesktopPoint Pointer::position() const {
  const auto pointer =
      server_.connection().reply(xcb_query_pointer_reply, xcb_query_pointer(server_.raw(), server_.root()));
  if (!pointer) return {};
  return screens_.layout().toDesktop(DevicePoint{(*pointer)->root_x, (*pointer)->root_y});
}

bool Pointer::isPressed() const {
  const auto pointer =
      server_.connection().reply(xcb_query_pointer_reply, xcb_query_pointer(server_.raw(), server_.root()));
  return pointer && ((*pointer)->mask & realButtons) != 0;
}

DesktopPoint Pointer::positionOf(const QMouseEvent& event) const {
  return screens_.layout().toDesktop(toolkit::devicePoint(event.globalPosition()));
}

Subscription Pointer::observeMotion(Over over, std::function<void()> handler) {
  if (!events_.isActive()) return {};
  return (over == Over::ownWindows ? overOwn_ : overOthers_).subscribe(std::move(handler));
}

Subscription Pointer::observePressesElsewhere(std::function<void()> handler) {
  if (!events_.isActive()) return {};
  return pressesElsewhere_.subscribe(std::move(handler));
}

void Pointer::setWatching(bool watching) {
  if (!events_.isActive()) return;
  if (!watching) due_.stop();
  selectRawEvents(server_, watching);
  server_.connection().flush();
}

// The server's clock goes round after 49 days.
void Pointer::noteTime(std::uint32_t time) {
  if (time_ == 0 || static_cast<std::int32_t>(time - time_) > 0) time_ = time;
}

void Pointer::handle(const ServerEvent& event) {
  // Of the keys that are grabbed for shortcuts.
  if (event.type() == XCB_KEY_PRESS || event.type() == XCB_KEY_RELEASE) {
    noteTime(event.as<xcb_key_press_event_t>().time);
  }
  if (event.type() != XCB_GE_GENERIC) return;
  const auto& generic = event.as<xcb_ge_generic_event_t>();
  if (generic.extension != server_.connection().extensions().input.majorOpcode) return;
  switch (generic.event_type) {
    case XCB_INPUT_RAW_MOTION:
      noteTime(event.as<xcb_input_raw_motion_event_t>().time);
      handleMotion();
      break;
    case XCB_INPUT_RAW_BUTTON_PRESS:
      noteTime(event.as<xcb_input_raw_button_press_event_t>().time);
      if (event.as<xcb_input_raw_button_press_event_t>().detail <= lastRealButton) handlePress();
      break;
    case XCB_INPUT_RAW_BUTTON_RELEASE:
      noteTime(event.as<xcb_input_raw_button_release_event_t>().time);
      break;
    default:
      break;
  }
}

void Pointer::handleMotion() {
  if (due_.isActive()) return;
  const qint64 passed = sinceReport_.isValid() ? sinceReport_.elapsed() : shortestInterval;
  if (passed >= shortestInterval) return report();
  due_.start(static_cast<int>(shortestInterval - passed));
}

void Pointer::handlePress() {
  const auto pointer =
      server_.connection().reply(xcb_query_pointer_reply, xcb_query_pointer(server_.raw(), server_.root()));
  if (pointer && !windows_.isOwn((*pointer)->child)) pressesElsewhere_();
}

// Raw events carry what the device said, not where the pointer went.
void Pointer::report() {
  sinceReport_.start();
  const auto pointer =
      server_.connection().reply(xcb_query_pointer_reply, xcb_query_pointer(server_.raw(), server_.root()));
  if (!pointer || ((*pointer)->mask & anyButton) != 0) return;
  (windows_.isOwn((*pointer)->child) ? overOwn_ : overOthers_)();
}

}  // namespace velicor::desktop
