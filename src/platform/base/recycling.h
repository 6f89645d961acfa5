#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace velicor {

// An allocator for single objects that come and go all the time: the memory of one that went serves the next of
// its kind, on whatever threads that happens. What was once taken stays with the process: as many blocks as there
// were objects at the same time.
template <typename T>
class Recycling {
 public:
  using value_type = T;

  Recycling() = default;
  template <typename Other>
  Recycling(const Recycling<Other>&) {}  // NOLINT(google-explicit-constructor): what allocators have

  T* allocate(std::size_t count) {
    if (count == 1) {
      const std::scoped_lock guard(store().mutex);
      if (Block* const block = store().free) {
        store().free = block->next;
        void* const memory = block;
        block->~Block();
        return static_cast<T*>(memory);
      }
    }
    return static_cast<T*>(::operator new(count * std::max(sizeof(T), sizeof(Block)), alignment));
  }

  void deallocate(T* memory, std::size_t count) {
    if (count != 1) return ::operator delete(memory, alignment);
    const std::scoped_lock guard(store().mutex);
    store().free = new (memory) Block{store().free};
  }

  friend bool operator==(const Recycling&, const Recycling&) { return true; }

 private:
  struct Block {
    Block* next;
  };
  struct Store {
    std::mutex mutex;
    Block* free = nullptr;
  };
  static constexpr std::align_val_t alignment{std::max(alignof(T), alignof(Block))};

  static Store& store() {
    static auto* const instance = new Store;  // objects may go until the process is gone
    return *instance;
  }
};

// As std::make_shared, in recycled memory.
template <typename T, typename... Arguments>
std::shared_ptr<T> makeRecycled(Arguments&&... arguments) {
  return std::allocate_shared<T>(Recycling<T>{}, std::forward<Arguments>(arguments)...);
}

// Objects that are used again as a whole, with the memory that they have come to hold. One that is let go of
// is emptied by its clear() and serves the next who asks, on whatever threads that happens. They stay with
// the process.
template <typename T>
class Stock {
 public:
  struct GiveBack {
    void operator()(T* used) const {
      std::unique_ptr<T> kept(used);
      kept->clear();
      const std::scoped_lock guard(shelf().mutex);
      shelf().idle.push_back(std::move(kept));
    }
  };
  using Loan = std::unique_ptr<T, GiveBack>;

  static Loan take() {
    {
      const std::scoped_lock guard(shelf().mutex);
      if (auto& idle = shelf().idle; !idle.empty()) {
        Loan loan(idle.back().release());
        idle.pop_back();
        return loan;
      }
    }
    return Loan(new T);
  }

 private:
  struct Shelf {
    std::mutex mutex;
    std::vector<std::unique_ptr<T>> idle;
  };

  static Shelf& shelf() {
    static auto* const instance = new Shelf;  // loans may go until the process is gone
    return *instance;
  }
};

}  // namespace velicor
