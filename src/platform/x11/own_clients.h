#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include <xcb/xcb.h>

#include "platform/x11/client_set.h"

namespace velicor::x11 {

// This process's connections to the X server: the toolkit's and our own. Whatever one of them made is ours,
// menus and tooltips included. Callable from any thread.
//
// A connection must be here before it makes its first window, else the capture could see that window as
// another program's for a frame.
class OwnClients {
 public:
  static OwnClients& shared();

  void add(std::uint32_t base, std::uint32_t mask);
  void remove(std::uint32_t base);

  // A connection that is not one of ours in form, such as the toolkit's.
  void add(xcb_connection_t* connection);

  ClientSet snapshot() const;

  // Changes whenever a snapshot would.
  unsigned generation() const { return generation_.load(std::memory_order_acquire); }

 private:
  struct Client {
    std::uint32_t base;
    std::uint32_t mask;
  };

  mutable std::mutex mutex_;
  std::vector<Client> clients_;
  std::atomic<unsigned> generation_{0};
};

}  // namespace velicor::x11
