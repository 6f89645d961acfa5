#pragma once

#include <compare>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/notifications/signal.h"

namespace velicor::notifications {

// What a notification is known by. Names are constants of the module that posts them; their text must live
// as long as the process.
struct Name {
  std::string_view text;
  friend auto operator<=>(const Name&, const Name&) = default;
};

// Announcements inside the process, from whoever posts to whoever observes, without either knowing the other.
// A notification is its name and nothing else.
class NotificationCenter {
 public:
  using Handler = std::function<void()>;

  NotificationCenter();
  ~NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  // The one that the program's parts share. Never destroyed.
  static NotificationCenter& defaultCenter();

  // Any thread. Posted on the main thread, the handlers have run when the call returns; from any other thread
  // they run there later, through the main queue. Handlers run in the order of their registration; what they
  // may do meanwhile is said at Signal.
  void post(Name name);

  // Main thread. The handler is called on the main thread for every post of this name, until the returned
  // registration is destroyed.
  [[nodiscard]] Subscription addObserver(Name name, Handler handler);

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace velicor::notifications
