#pragma once

#include <optional>

#include "platform/dispatch/clock.h"

namespace velicor::screencapture {

// Decides when a stream looks at the screen and what it owes its receiver. Pure: the caller brings the time.
//
// The first change after a quiet time is looked at once, later ones when the interval since the last look has
// passed, so that no frame comes too early and the last change is never lost. Every start, reconfiguration
// and change is followed by two more frames, because receivers that work on every second or third frame
// only would otherwise be left with an old one.
class FramePacer {
 public:
  using Duration = dispatch::Duration;
  using Instant = dispatch::Instant;

  explicit FramePacer(Duration interval) : interval_(interval) {}

  void setInterval(Duration interval) { interval_ = interval; }

  // Something happened that may show in the frame.
  void stir() { stirred_ = true; }

  // The next frame is owed in any case: the stream starts, or shows something else from now on.
  void demandFrame() { demanded_ = true; }

  // When to look next; none while there is nothing to look for.
  std::optional<Instant> due() const;
  bool isDue(Instant now) const { return due() && *due() <= now; }

  // Whether a frame is owed even if nothing changed, and whether it must not be held back because it looks
  // like the one before: the settling ones, and those demanded.
  bool owesFrame() const { return demanded_ || settling_ > 0; }

  // Whether demandFrame() or a skipped look still waits for its frame.
  bool isDemanded() const { return demanded_; }

  // What came of a look. Changed: a frame with new contents, or a demanded one, went out. Settled: one of the
  // frames that follow. Idle: nothing had changed. Skipped: a frame could not be made; it stays owed.
  void changed(Instant now);
  void settled(Instant now);
  void idle(Instant now);
  void skipped(Instant now);

 private:
  static constexpr int settleFrames = 2;

  void looked(Instant now);

  Duration interval_;
  std::optional<Instant> last_;
  bool stirred_ = false;
  bool demanded_ = false;
  int settling_ = 0;
};

}  // namespace velicor::screencapture
