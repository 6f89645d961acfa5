#pragma once

#include <cstdint>
#include <vector>

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

}  // namespace velicor::x11
