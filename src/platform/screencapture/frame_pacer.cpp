#include "platform/screencapture/frame_pacer.h"

namespace velicor::screencapture {

std::optional<FramePacer::Instant> FramePacer::due() const {
  if (!stirred_ && !owesFrame()) return std::nullopt;
  return last_ ? *last_ + interval_ : Instant::min();
}

void FramePacer::changed(Instant now) {
  looked(now);
  demanded_ = false;
  settling_ = settleFrames;
}

void FramePacer::settled(Instant now) {
  looked(now);
  if (settling_ > 0) --settling_;
}

void FramePacer::idle(Instant now) { looked(now); }

void FramePacer::skipped(Instant now) {
  looked(now);
  demanded_ = true;
}

void FramePacer::looked(Instant now) {
  last_ = now;
  stirred_ = false;
}

}  // namespace velicor::screencapture
