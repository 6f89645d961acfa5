#include "platform/screencapture/x11/capture_memory.h"

#include <algorithm>
#include <utility>

#include "platform/base/recycling.h"

namespace velicor::screencapture {

namespace {

// Memory of up to this size is not worth making anew.
constexpr std::size_t alwaysKept = 1024UL * 1024;

bool isOversized(const Segment& segment, std::size_t wanted) {
  constexpr std::size_t farTooLarge = 4;
  return segment.size() > alwaysKept && segment.size() / farTooLarge > wanted;
}

}  // namespace

Rows Rows::united(const Rows& other) const {
  if (isEmpty()) return other;
  if (other.isEmpty()) return *this;
  return {std::min(top, other.top), std::max(bottom, other.bottom)};
}

Segment::Segment(std::byte* bytes, std::size_t size, std::uint32_t serverId, Unmap unmap)
    : bytes_(bytes), size_(size), serverId_(serverId), unmap_(std::move(unmap)) {}

Segment::~Segment() {
  if (unmap_) unmap_(bytes_, size_);
}

SegmentPool::SegmentPool(SegmentSource& source, int depth, std::function<void()> onFree)
    : source_(source), depth_(depth), hunger_(std::make_shared<Segment::Hunger>()) {
  hunger_->onFree = std::move(onFree);
}

SegmentPool::~SegmentPool() {
  for (const auto& segment : segments_)
    source_.retire(*segment);
}

int SegmentPool::inUse() const {
  int sum = 0;
  for (const auto& segment : segments_)
    sum += segment->frames_.load() + (segment->taken_ ? 1 : 0);
  return sum;
}

bool SegmentPool::hasFree() {
  // Announced before looking: a segment that comes back after the look then tells.
  hunger_->waiting = true;
  if (inUse() >= depth_) return false;
  hunger_->waiting = false;
  return true;
}

std::shared_ptr<Segment> SegmentPool::pickFree() {
  const auto firstFree = [this](bool lastToo) {
    return std::find_if(segments_.begin(), segments_.end(), [this, lastToo](const auto& segment) {
      return !segment->taken_ && segment->frames_.load() == 0 && (lastToo || segment != last_);
    });
  };
  auto place = firstFree(false);
  if (place == segments_.end() && static_cast<int>(segments_.size()) < depth_) return nullptr;
  if (place == segments_.end()) place = firstFree(true);
  return place == segments_.end() ? nullptr : *place;
}

std::shared_ptr<Segment> SegmentPool::acquire(std::size_t size) {
  if (!hasFree()) return nullptr;
  retireOversized(size);
  std::shared_ptr<Segment> segment = pickFree();
  if (segment && segment->size() < size) {
    retire(segment);
    std::erase(segments_, std::exchange(segment, nullptr));
  }
  if (!segment) {
    segment = source_.make(size);
    if (!segment) return nullptr;
    segment->hunger_ = hunger_;
    segments_.push_back(segment);
  }
  if (segment == last_) last_ = nullptr;
  segment->taken_ = true;
  return segment;
}

void SegmentPool::retire(const std::shared_ptr<Segment>& segment) {
  source_.retire(*segment);
  if (segment == last_) last_ = nullptr;
}

void SegmentPool::retireOversized(std::size_t size) {
  std::erase_if(segments_, [&](const auto& segment) {
    const bool isFree = !segment->taken_ && segment->frames_.load() == 0;
    const bool goes = isFree && isOversized(*segment, size);
    if (goes) retire(segment);
    return goes;
  });
}

void SegmentPool::written(const std::shared_ptr<Segment>& segment, const Rows& changed) {
  for (const auto& each : segments_)
    each->outdated_ = each->outdated_.united(changed);
  segment->outdated_ = {};
}

PixelBufferRef SegmentPool::publish(const std::shared_ptr<Segment>& segment, int width, int height) {
  last_ = segment;
  segment->taken_ = false;
  return frameOf(segment, width, height);
}

PixelBufferRef SegmentPool::publishLast(int width, int height) {
  if (!last_ || !hasFree()) return nullptr;
  PixelBufferRef frame = frameOf(last_, width, height);
  retireOversized(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
  return frame;
}

PixelBufferRef SegmentPool::frameOf(const std::shared_ptr<Segment>& segment, int width, int height) {
  ++segment->frames_;
  // The frame itself keeps the segment.
  const auto release = [raw = segment.get()] {
    --raw->frames_;
    if (raw->hunger_->waiting.exchange(false)) raw->hunger_->onFree();
  };
  return makeRecycled<PixelBuffer>(width, height, static_cast<std::size_t>(width) * 4, segment->bytes(),
                                       release, segment);
}

void SegmentPool::giveBack(const std::shared_ptr<Segment>& segment) { segment->taken_ = false; }

}  // namespace velicor::screencapture
