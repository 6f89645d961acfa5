#include "platform/gpu/vulkan/usage.h"

#include <utility>

namespace velicor::gpu::vulkan {

std::optional<Wait> Usage::then(const Access& next) {
  const bool moves = next.layout != layout_;
  const bool changes = next.writes || moves;
  const Wait wait{writeStages_ | (changes ? readStages_ : 0), writeAccess_, layout_};
  const bool seesWrites = (next.stages & ~readStages_) == 0 && (next.access & ~readAccess_) == 0;
  const bool waits = moves || (changes ? wait.stages != 0 : writeStages_ != 0 && !seesWrites);
  if (changes) {
    // A change of layout is a write that the command itself sees, and later reads have to wait for.
    writeStages_ = next.stages;
    writeAccess_ = next.writes ? next.access : 0;
    readStages_ = next.writes ? 0 : next.stages;
    readAccess_ = next.writes ? 0 : next.access;
  } else {
    readStages_ |= next.stages;
    readAccess_ |= next.access;
  }
  layout_ = next.layout;
  return waits ? std::optional(wait) : std::nullopt;
}

}  // namespace velicor::gpu::vulkan
