#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "platform/base/geometry.h"

namespace velicor::test {

// The server's numbers of some keys.
namespace key {
inline constexpr std::uint8_t escape = 9, tab = 23, enter = 36, control = 37, a = 38, s = 39, shift = 50,
                              alt = 64, capsLock = 66, numLock = 77, super = 133;
}  // namespace key

// A hand on the mouse and the keys of a display: what it does reaches programs as if a device had done it.
// Each call returns when the server has taken it in.
class Robot {
 public:
  explicit Robot(const std::string& display);
  ~Robot();
  Robot(const Robot&) = delete;
  Robot& operator=(const Robot&) = delete;

  void moveTo(DevicePoint place);
  void press();
  void release();
  void click(DevicePoint place);

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
