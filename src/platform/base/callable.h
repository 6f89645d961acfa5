#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace velicor {

// A function object that is moved and never copied. One of up to `room` bytes lies in this object itself, a
// larger one in memory of its own. Calling an empty one is a mistake.
template <typename Signature, std::size_t room>
class Callable;

template <typename Result, typename... Arguments, std::size_t room>
class Callable<Result(Arguments...), room> {
 public:
  Callable() = default;
  Callable(std::nullptr_t) {}

  template <typename Function>
  requires(!std::is_same_v<std::remove_cvref_t<Function>, Callable> &&
           std::is_invocable_r_v<Result, std::decay_t<Function>&, Arguments...>)
      Callable(Function&& function) {  // NOLINT(bugprone-forwarding-reference-overload)
    using Kept = std::decay_t<Function>;
    if constexpr (fits<Kept>) {
      new (place_) Kept(std::forward<Function>(function));
      kind_ = &kindOf<Kept>;
    } else {
      *this =
          Callable([kept = std::make_unique<Kept>(std::forward<Function>(function))](Arguments... arguments) {
            return (*kept)(std::forward<Arguments>(arguments)...);
          });
    }
  }

  Callable(Callable&& other) noexcept { take(other); }
  Callable& operator=(Callable&& other) noexcept {
    if (this == &other) return *this;
    release();
    take(other);
    return *this;
  }
  ~Callable() { release(); }

  explicit operator bool() const { return kind_ != nullptr; }

  Result operator()(Arguments... arguments) const {
    return kind_->call(place_, std::forward<Arguments>(arguments)...);
  }

 private:
  struct Kind {
    Result (*call)(void* function, Arguments... arguments);
    void (*move)(void* from, void* to);
    void (*destroy)(void* function);
  };

  template <typename Kept>
  static constexpr bool fits =
      sizeof(Kept) <= room &&
      alignof(Kept) <= alignof(std::max_align_t) && std::is_nothrow_move_constructible_v<Kept>;

  template <typename Kept>
  static constexpr Kind kindOf{
      [](void* function, Arguments... arguments) -> Result {
        return (*static_cast<Kept*>(function))(std::forward<Arguments>(arguments)...);
      },
      [](void* from, void* to) {
        new (to) Kept(std::move(*static_cast<Kept*>(from)));
        static_cast<Kept*>(from)->~Kept();
      },
      [](void* function) { static_cast<Kept*>(function)->~Kept(); }};

  void take(Callable& other) {
    kind_ = std::exchange(other.kind_, nullptr);
    if (kind_) kind_->move(other.place_, place_);
  }

  // The function goes last: what it holds may lead back here.
  void release() {
    if (const Kind* const kind = std::exchange(kind_, nullptr)) kind->destroy(place_);
  }

  alignas(std::max_align_t) mutable std::byte place_[room] = {};
  const Kind* kind_ = nullptr;
};

}  // namespace velicor
