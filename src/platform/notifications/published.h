#pragma once

#include <utility>

#include "platform/notifications/signal.h"

namespace velicor {

// A property that views show. Every assignment, of an equal value too, first tells the owner's subscribers
// that something is about to change, then stores the value: handlers mark their views for redraw and read
// later. Main thread.
template <typename T>
class Published {
 public:
  Published(Signal<>& willChange, T initial) : willChange_(willChange), value_(std::move(initial)) {}
  Published(const Published&) = delete;

  Published& operator=(T value) {
    willChange_();
    value_ = std::move(value);
    return *this;
  }

  const T& operator*() const { return value_; }
  const T* operator->() const { return &value_; }

 private:
  Signal<>& willChange_;
  T value_;
};

}  // namespace velicor
