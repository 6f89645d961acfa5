#include "platform/x11/client_set.h"

#include <algorithm>

namespace velicor::x11 {

void ClientSet::add(std::uint32_t base, std::uint32_t mask) {
  mask_ = mask;
  const auto place = std::lower_bound(bases_.begin(), bases_.end(), base);
  if (place == bases_.end() || *place != base) bases_.insert(place, base);
}

void ClientSet::merge(const ClientSet& other) {
  for (const std::uint32_t base : other.bases_)
    add(base, other.mask_);
}

bool ClientSet::made(std::uint32_t xid) const {
  return std::binary_search(bases_.begin(), bases_.end(), xid & ~mask_);
}

}  // namespace velicor::x11
