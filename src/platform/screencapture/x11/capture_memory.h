#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "platform/base/pixel_buffer.h"

namespace velicor::screencapture {

// A band of a frame, from row `top` to before row `bottom`.
struct Rows {
  int top = 0;
  int bottom = 0;

  static constexpr Rows all() { return {0, std::numeric_limits<int>::max()}; }

  bool isEmpty() const { return bottom <= top; }

  // The smallest band that has both.
  Rows united(const Rows& other) const;

  // The common part.
  Rows within(const Rows& other) const { return {std::max(top, other.top), std::min(bottom, other.bottom)}; }

  friend bool operator==(const Rows&, const Rows&) = default;
};

// Memory for one frame, possibly shared with the X server.
class Segment {
 public:
  // Gives the memory back on destruction, on any thread.
  using Unmap = std::function<void(std::byte* bytes, std::size_t size)>;

  Segment(std::byte* bytes, std::size_t size, std::uint32_t serverId, Unmap unmap);
  ~Segment();
  Segment(const Segment&) = delete;
  Segment& operator=(const Segment&) = delete;

  std::byte* bytes() const { return bytes_; }
  std::size_t size() const { return size_; }

  // The server's name of the same memory; 0: the server does not know it.
  std::uint32_t serverId() const { return serverId_; }

  // What has to be written to make it the newest frame; at first everything.
  const Rows& outdated() const { return outdated_; }

 private:
  friend class SegmentPool;

  // Who waits for a segment.
  struct Hunger {
    std::atomic<bool> waiting{false};
    std::function<void()> onFree;
  };

  std::byte* bytes_;
  std::size_t size_;
  std::uint32_t serverId_;
  Unmap unmap_;
  std::shared_ptr<Hunger> hunger_;
  Rows outdated_ = Rows::all();
  bool taken_ = false;          // being written
  std::atomic<int> frames_{0};  // made of it and still there
};

// Where segments come from and go to. Used on the pool's thread only.
class SegmentSource {
 public:
  virtual ~SegmentSource() = default;

  // At least this large; none when no memory can be had.
  virtual std::shared_ptr<Segment> make(std::size_t size) = 0;

  // The server forgets the segment; its memory lives on while a frame in it does.
  virtual void retire(const Segment& segment) = 0;
};

// A fixed number of frames that may be in use at once. A segment is in use from acquire() until the last
// reference to the frames made of it is gone, on whatever thread that happens; the pool itself belongs to one
// thread, and frames may outlive it.
class SegmentPool {
 public:
  // `onFree` is called, on any thread, when a segment comes back after acquire() or hasFree() had found none.
  SegmentPool(SegmentSource& source, int depth, std::function<void()> onFree);
  ~SegmentPool();
  SegmentPool(const SegmentPool&) = delete;
  SegmentPool& operator=(const SegmentPool&) = delete;

  // Fewer than what is in use just means that none is handed out until enough came back.
  void setDepth(int depth) { depth_ = depth; }

  // A segment to write a frame of this size into; none while all are in use or no memory can be had. The one
  // that holds the last frame is kept back while there is another. Those that are far too large and not in
  // use go, and with them what larger frames have shown.
  std::shared_ptr<Segment> acquire(std::size_t size);

  // Whether acquire() would find one that is not in use. Where not, `onFree` tells.
  bool hasFree();

  // For a segment from acquire(): it was brought up to date, and these rows are other than in the frame
  // before.
  void written(const std::shared_ptr<Segment>& segment, const Rows& changed);

  // For a segment from acquire(): what was written is the frame now, and the last one.
  PixelBufferRef publish(const std::shared_ptr<Segment>& segment, int width, int height);

  // Another frame of the last one's memory; none where acquire() would give none, or there is no last one.
  PixelBufferRef publishLast(int width, int height);

  // For a segment from acquire(): it makes no frame.
  void giveBack(const std::shared_ptr<Segment>& segment);

  // The last frame's memory, for comparing; none before the first frame, and while acquire() had to hand it
  // out again.
  const Segment* last() const { return last_.get(); }

 private:
  PixelBufferRef frameOf(const std::shared_ptr<Segment>& segment, int width, int height);
  int inUse() const;
  void retire(const std::shared_ptr<Segment>& segment);
  void retireOversized(std::size_t size);
  std::shared_ptr<Segment> pickFree();

  SegmentSource& source_;
  int depth_;
  std::shared_ptr<Segment::Hunger> hunger_;
  std::vector<std::shared_ptr<Segment>> segments_;
  std::shared_ptr<Segment> last_;
};

}  // namespace velicor::screencapture
