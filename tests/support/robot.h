#pragma once

#include <string>

#include <xcb/xcb.h>

#include "platform/base/geometry.h"

namespace velicor::test {

// A hand on the mouse of a display: what it does reaches programs as if a device had done it. Each call
// returns when the server has taken it in.
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

 private:
  void fake(std::uint8_t type, std::uint8_t detail, DevicePoint place);

  xcb_connection_t* connection_;
  xcb_window_t root_;
};

}  // namespace velicor::test
