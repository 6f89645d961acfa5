#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace velicor {

// First in, first out, in memory that is kept: once it has had its largest number of elements it takes none
// any more. Used by one thread at a time.
template <typename T>
class Ring {
 public:
  bool isEmpty() const { return count_ == 0; }
  std::size_t size() const { return count_; }

  void push(T value) {
    if (count_ == places_.size()) grow();
    places_[(first_ + count_++) % places_.size()] = std::move(value);
  }

  // Not of an empty one.
  T pop() {
    T value = std::exchange(places_[first_], T());
    first_ = (first_ + 1) % places_.size();
    --count_;
    return value;
  }

  void clear() {
    while (!isEmpty())
      pop();
  }

 private:
  void grow() {
    std::vector<T> larger(std::max<std::size_t>(8, places_.size() * 2));
    for (std::size_t i = 0; i < count_; ++i)
      larger[i] = std::move(places_[(first_ + i) % places_.size()]);
    places_ = std::move(larger);
    first_ = 0;
  }

  std::vector<T> places_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
};

}  // namespace velicor
