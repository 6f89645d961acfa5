#pragma once

#include "platform/screencapture/x11/capture_memory.h"
#include "platform/x11/connection.h"

namespace velicor::screencapture {

// Segments that the X server writes into, by the best way that it takes: an anonymous file handed over the
// connection, else System V shared memory, else memory of our own that pictures are copied into from the
// connection (a server on another machine or in another container). What was refused once is not tried again.
class ServerMemory : public SegmentSource {
 public:
  enum class Way { file, systemV, copy };

  // `connection` outlives it. `first`: the best way to try.
  explicit ServerMemory(x11::Connection& connection, Way first = Way::file);

  std::shared_ptr<Segment> make(std::size_t size) override;
  void retire(const Segment& segment) override;

  // The way that the last segment was made.
  Way way() const { return way_; }

 private:
  std::shared_ptr<Segment> makeByFile(std::size_t size);
  std::shared_ptr<Segment> makeBySystemV(std::size_t size);
  std::shared_ptr<Segment> makePlain(std::size_t size);

  x11::Connection& connection_;
  Way way_;
};

}  // namespace velicor::screencapture
