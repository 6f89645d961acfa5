#pragma once

#include <string>

#include <xcb/xcb.h>

namespace velicor::test {

// Hears the bell of a display.
class Bell {
 public:
  explicit Bell(const std::string& display);
  ~Bell();
  Bell(const Bell&) = delete;
  Bell& operator=(const Bell&) = delete;

  // Until a program asks the server to sound it; each time counts once.
  bool sounds() const;

 private:
  xcb_connection_t* connection_;
};

}  // namespace velicor::test
