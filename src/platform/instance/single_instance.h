#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/notifications/signal.h"

namespace velicor::desktop {
class Desktop;
}
namespace velicor::x11 {
class Connection;
}

namespace velicor {

// The claim to be the one running program of a name, for this user on this X display. The server itself keeps
// it, so that it ends with the process in whatever way that ends. Main thread; outlived by the desktop.
class SingleInstance {
 public:
  // None where the claim is another process's: that has been told the wish then, a number that the program gives
  // a meaning to.
  static std::unique_ptr<SingleInstance> claim(desktop::Desktop& desktop, std::string_view program,
                                               std::uint32_t wish = 0);

  // Tells the wish to the process that has the claim; false where none has it.
  static bool tell(x11::Connection& connection, std::string_view program, std::uint32_t wish);

  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  // Another process wanted to be it, or had a wish. Any client of the server can send any number.
  Signal<std::uint32_t> wanted;

 private:
  SingleInstance(desktop::Desktop& desktop, std::uint32_t window, std::uint32_t message);

  desktop::Desktop& desktop_;
  const std::uint32_t window_;
  Subscription events_;
};

}  // namespace velicor
