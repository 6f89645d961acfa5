#include "support/robot.h"

#include <cstdlib>
#include <stdexcept>

#include <xcb/xtest.h>

namespace velicor::test {

Robot::Robot(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)), root_(0) {
  if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no display for the robot");
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

Robot::~Robot() { xcb_disconnect(connection_); }

void Robot::fake(std::uint8_t type, std::uint8_t detail, DevicePoint place) {
  xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_, static_cast<std::int16_t>(place.x),
                      static_cast<std::int16_t>(place.y), 0);
  std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

void Robot::moveTo(DevicePoint place) { fake(XCB_MOTION_NOTIFY, 0, place); }
void Robot::press(std::uint8_t button) { fake(XCB_BUTTON_PRESS, button, {}); }
void Robot::release(std::uint8_t button) { fake(XCB_BUTTON_RELEASE, button, {}); }

void Robot::pressKey(std::uint8_t keycode) { fake(XCB_KEY_PRESS, keycode, {}); }
void Robot::releaseKey(std::uint8_t keycode) { fake(XCB_KEY_RELEASE, keycode, {}); }

void Robot::strike(const std::vector<std::uint8_t>& keycodes) {
  for (const std::uint8_t keycode : keycodes)
    pressKey(keycode);
  for (auto keycode = keycodes.rbegin(); keycode != keycodes.rend(); ++keycode)
    releaseKey(*keycode);
}

void Robot::click(DevicePoint place, std::uint8_t button) {
  moveTo(place);
  press(button);
  release(button);
}

void Robot::drag(DevicePoint from, DevicePoint to) {
  moveTo(from);
  press();
  constexpr int steps = 4;
  for (int step = 1; step <= steps; ++step) {
    moveTo({from.x + (to.x - from.x) * step / steps, from.y + (to.y - from.y) * step / steps});
  }
  release();
}

}  // namespace velicor::test
