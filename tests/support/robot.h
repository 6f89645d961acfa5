#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "platform/base/geometry.h"

namespace velicor::test {

// The server's numbers of some keys.
namespace key {
inline constexpr std::uint8_t escape = 9, digit1 = 10, digit2 = 11, digit3 = 12, tab = 23, q = 24, enter = 36,
                              control = 37, a = 38, s = 39, l = 46, shift = 50, alt = 64, space = 65, capsLock = 66,
                              f1 = 67, f6 = 72, f10 = 76, numLock = 77, home = 110, up = 111, left = 113, right = 114,
                              end = 115, down = 116, super = 133;
}  // namespace key

// A hand on the mouse and the keys of a display: what it does reaches programs as if a device had done it.
// Each call returns when the server has taken it in.
class Robot {
 public:
  static constexpr std::uint8_t leftButton = 1, rightButton = 3;

  explicit Robot(const std::string& display);
  ~Robot();
  Robot(const Robot&) = delete;
  Robot& operator=(const Robot&) = delete;

  void moveTo(DevicePoint place);
  void press(std::uint8_t button = leftButton);
  void release(std::uint8_t button = leftButton);
  void click(DevicePoint place, std::uint8_t button = leftButton);

  // Down at the first place, over to the second in a few steps, up.
  void drag(DevicePoint from, DevicePoint to);

  void pressKey(std::uint8_t keycode);
  void releaseKey(std::uint8_t keycode);

  // Presses the keys one after the other and lets them go in reverse order.
  void strike(const std::vector<std::uint8_t>& keycodes);

 private:
  void fake(std::uint8_t type, std::uint8_t detail, DevicePoint place);

  xcb_connection_t* connection_;
  xcb_window_t root_;
};

}  // namespace velicor::test
