#include "platform/notifications/notification_center.h"

#include <map>
#include <utility>

#include "platform/dispatch/main_queue.h"

namespace velicor::notifications {

// Touched on the main thread only.
struct NotificationCenter::State {
  std::map<Name, Signal<>> signals;  // nodes stay where they are while handlers add others

  void deliver(Name name) {
    const auto entry = signals.find(name);
    if (entry != signals.end()) entry->second();
  }
};

NotificationCenter::NotificationCenter() : state_(std::make_shared<State>()) {}

NotificationCenter::~NotificationCenter() = default;

NotificationCenter& NotificationCenter::defaultCenter() {
  static auto* const center = new NotificationCenter;  // registrations of statics end after main() too
  return *center;
}

void NotificationCenter::post(Name name) {
  dispatch::MainQueue& mainQueue = dispatch::MainQueue::shared();
  if (mainQueue.isCurrent()) {
    const std::shared_ptr<State> state = state_;  // a handler may destroy the centre
    state->deliver(name);
    return;
  }
  mainQueue.async([weak = std::weak_ptr<State>(state_), name] {
    if (const std::shared_ptr<State> state = weak.lock()) state->deliver(name);
  });
}

Subscription NotificationCenter::addObserver(Name name, Handler handler) {
  return state_->signals[name].subscribe(std::move(handler));
}

}  // namespace velicor::notifications
