#include "platform/x11/own_clients.h"

#include <algorithm>

namespace velicor::x11 {

OwnClients& OwnClients::shared() {
  static OwnClients instance;
  return instance;
}

void OwnClients::add(std::uint32_t base, std::uint32_t mask) {
  const std::scoped_lock guard(mutex_);
  clients_.push_back({base, mask});
  generation_.fetch_add(1, std::memory_order_release);
}

void OwnClients::add(xcb_connection_t* connection) {
  const xcb_setup_t* setup = xcb_get_setup(connection);
  if (setup) add(setup->resource_id_base, setup->resource_id_mask);
}

void OwnClients::remove(std::uint32_t base) {
  const std::scoped_lock guard(mutex_);
  const auto entry = std::find_if(clients_.begin(), clients_.end(),
                                  [base](const Client& client) { return client.base == base; });
  if (entry == clients_.end()) return;
  clients_.erase(entry);
  generation_.fetch_add(1, std::memory_order_release);
}

ClientSet OwnClients::snapshot() const {
  const std::scoped_lock guard(mutex_);
  ClientSet set;
  for (const Client& client : clients_)
    set.add(client.base, client.mask);
  return set;
}

}  // namespace velicor::x11
