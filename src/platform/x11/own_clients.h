#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include <xcb/xcb.h>

namespace velicor::x11 {

// A set of a server's clients, told apart by the range of identifiers that the server gave each of them. A
// plain value.
class ClientSet {
 public:
  void add(std::uint32_t base, std::uint32_t mask);
  void merge(const ClientSet& other);

  // Whether one of the clients made the resource with this identifier.
  bool made(std::uint32_t xid) const;

  bool isEmpty() const { return bases_.empty(); }
  friend bool operator==(const ClientSet&, const ClientSet&) = default;

 private:
  std::uint32_t mask_ = 0;            // the same for all clients of a server
  std::vector<std::uint32_t> bases_;  // sorted, each once
};

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
