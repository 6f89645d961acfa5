#pragma once

#include <coroutine>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "platform/dispatch/main_queue.h"

namespace velicor::dispatch {

// A value that arrives once, from any thread, and that one coroutine on the main thread waits for with
// `co_await`. The coroutine always continues through the main queue, never inside resolve(). Copies share the
// same value; the first resolve() wins. Whoever makes a completion sees to it that it is resolved: a
// coroutine that waits for one that never is stays in memory.
template <typename T>
class Completion {
 public:
  using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

  // Any thread.
  template <typename U = Value>
  void resolve(U&& value = {}) const {
    const std::scoped_lock guard(state_->mutex);
    if (state_->value) return;
    state_->value.emplace(std::forward<U>(value));
    if (state_->waiting) continueLater(state_->waiting);
  }

  bool isResolved() const {
    const std::scoped_lock guard(state_->mutex);
    return state_->value.has_value();
  }

  auto operator co_await() const { return Awaiter{state_}; }

 private:
  struct State {
    std::mutex mutex;
    std::optional<Value> value;
    std::coroutine_handle<> waiting;
  };

  struct Awaiter {
    std::shared_ptr<State> state;

    bool await_ready() const { return false; }
    void await_suspend(std::coroutine_handle<> handle) const {
      const std::scoped_lock guard(state->mutex);
      state->waiting = handle;
      if (state->value) continueLater(handle);
    }
    T await_resume() const {
      const std::scoped_lock guard(state->mutex);
      if constexpr (!std::is_void_v<T>) return std::move(*state->value);
    }
  };

  static void continueLater(std::coroutine_handle<> handle) {
    MainQueue::shared().async([handle] { handle.resume(); });
  }

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace velicor::dispatch
