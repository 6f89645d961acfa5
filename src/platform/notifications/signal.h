#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace velicor {

// A registration with a Signal or a NotificationCenter. Destroying it, or assigning another, ends the
// registration: from then on the handler is not called, not even by a call that is already under way. It may
// outlive what it is registered with. Main thread.
class Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::shared_ptr<void> handler) : handler_(std::move(handler)) {}
  Subscription(Subscription&&) = default;
  Subscription& operator=(Subscription&&) = default;
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;

  bool isActive() const { return handler_ != nullptr; }

 private:
  std::shared_ptr<void> handler_;  // the only lasting reference: the signal holds handlers weakly
};

// Tells any number of handlers, in the order in which they subscribed, that something happened. Main thread.
//
// While a call is under way handlers may end their own or any other subscription, subscribe new handlers
// (which are first called by the next call), call the signal again and destroy it.
template <typename... Arguments>
class Signal {
 public:
  using Handler = std::function<void(Arguments...)>;

  [[nodiscard]] Subscription subscribe(Handler handler) {
    forgetEnded();
    auto kept = std::make_shared<Handler>(std::move(handler));
    handlers_.push_back(kept);
    return Subscription(std::move(kept));
  }

  void operator()(Arguments... arguments) {
    forgetEnded();
    const std::vector<std::weak_ptr<Handler>> present = handlers_;
    for (const std::weak_ptr<Handler>& candidate : present) {
      if (const std::shared_ptr<Handler> handler = candidate.lock()) (*handler)(arguments...);
    }
  }

 private:
  void forgetEnded() {
    std::erase_if(handlers_, [](const std::weak_ptr<Handler>& handler) { return handler.expired(); });
  }

  std::vector<std::weak_ptr<Handler>> handlers_;
};

}  // namespace velicor
