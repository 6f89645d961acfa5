#include <gtest/gtest.h>

#include <cstring>

#include "platform/screencapture/frame_geometry.h"
#include "platform/screencapture/frame_pacer.h"
#include "platform/screencapture/x11/capture_memory.h"

namespace velicor::screencapture {
namespace {

using namespace std::chrono_literals;
using Instant = FramePacer::Instant;

constexpr Instant start{};

TEST(FramePacer, LooksAtOnceAndThenAtTheInterval) {
  FramePacer pacer(100ms);
  EXPECT_FALSE(pacer.due());
  pacer.stir();
  EXPECT_TRUE(pacer.isDue(start));
  pacer.idle(start);
  EXPECT_FALSE(pacer.due());
  pacer.stir();  // right after: waits, and is not lost
  EXPECT_EQ(pacer.due(), start + 100ms);
  EXPECT_FALSE(pacer.owesFrame());
  pacer.idle(start + 100ms);
  pacer.setInterval(20ms);
  pacer.stir();
  EXPECT_EQ(pacer.due(), start + 120ms);
}

TEST(FramePacer, KeepsOwingWhatWasSkipped) {
  FramePacer pacer(100ms);
  pacer.stir();
  pacer.skipped(start);
  EXPECT_TRUE(pacer.isDemanded());
  EXPECT_EQ(pacer.due(), start + 100ms);
  pacer.changed(start + 100ms);
  EXPECT_FALSE(pacer.isDemanded());
}

StreamConfiguration configurationOf(const DisplayRect& source, int width, int height, double scale = 0) {
  StreamConfiguration configuration;
  configuration.sourceRect = source;
  configuration.width = width;
  configuration.height = height;
  configuration.pixelsPerPoint = scale;
  return configuration;
}

TEST(FrameGeometry, RoundsTheCornerAndKeepsTheSize) {
  const DeviceRect monitor{1920, 100, 2560, 1440};
  EXPECT_EQ(frameRect(configurationOf({10, 20, 300, 200}, 300, 200), monitor),
            (DeviceRect{1930, 120, 300, 200}));
  EXPECT_EQ(frameRect(configurationOf({10, 20, 300, 200}, 600, 400), monitor),
            (DeviceRect{1940, 140, 600, 400}));
  EXPECT_EQ(frameRect(configurationOf({10.5, 20.4, 300, 200}, 375, 250), monitor),
            (DeviceRect{1933, 126, 375, 250}));
  EXPECT_EQ(frameRect(configurationOf({-10.5, 0, 300, 200}, 300, 200), monitor).x, 1920 - 11);
}

// The size in pixels is itself rounded: far from the corner the ratio would miss by pixels.
TEST(FrameGeometry, TakesTheStatedScale) {
  const DeviceRect monitor{0, 0, 3840, 2160};
  EXPECT_EQ(frameRect(configurationOf({3000, 1000, 2, 2}, 3, 3, 1.25), monitor),
            (DeviceRect{3750, 1250, 3, 3}));
  EXPECT_EQ(frameRect(configurationOf({2000, 0, 301, 100}, 376, 125, 1.25), monitor).x, 2500);
}

// Heap memory, and a count of what the server would have to forget.
class HeapSource : public SegmentSource {
 public:
  std::shared_ptr<Segment> make(std::size_t size) override {
    ++made;
    return std::make_shared<Segment>(new std::byte[size], size, 1,
                                     [](std::byte* bytes, std::size_t) { delete[] bytes; });
  }
  void retire(const Segment&) override { ++retired; }
  int made = 0;
  int retired = 0;
};

TEST(SegmentPool, HandsOutNoMoreThanItsDepth) {
  HeapSource source;
  int freed = 0;
  SegmentPool pool(source, 3, [&] { ++freed; });
  std::vector<PixelBufferRef> frames;
  for (int i = 0; i < 3; ++i)
    frames.push_back(pool.publish(pool.acquire(64), 4, 4));
  EXPECT_EQ(freed, 0);
  EXPECT_EQ(pool.acquire(64), nullptr);
  const PixelBufferRef copy = frames[1];
  frames[1] = nullptr;
  EXPECT_EQ(pool.acquire(64), nullptr) << "someone still holds it";
  frames[0] = nullptr;
  EXPECT_EQ(freed, 1);
  frames[2] = nullptr;
  EXPECT_EQ(freed, 1) << "told once";
  EXPECT_TRUE(pool.hasFree());
  EXPECT_EQ(source.made, 3);
}

TEST(SegmentPool, KeepsTheLastFrameForComparing) {
  HeapSource source;
  SegmentPool pool(source, 3, [] {});
  for (int i = 0; i < 10; ++i) {
    const auto segment = pool.acquire(64);
    EXPECT_NE(segment.get(), pool.last());
    std::memset(segment->bytes(), i, 64);
    pool.publish(segment, 4, 4);
    EXPECT_EQ(pool.last(), segment.get());
  }
  SegmentPool single(source, 1, [] {});
  single.publish(single.acquire(64), 4, 4);
  EXPECT_NE(single.acquire(64), nullptr);
  EXPECT_EQ(single.last(), nullptr);
}

TEST(SegmentPool, GrowsAndIsOutlivedByItsFrames) {
  HeapSource source;
  PixelBufferRef frame;
  {
    SegmentPool pool(source, 2, [] {});
    pool.publish(pool.acquire(64), 4, 4);
    pool.publish(pool.acquire(64), 4, 4);
    const auto larger = pool.acquire(256);
    EXPECT_GE(larger->size(), 256u);
    EXPECT_EQ(source.retired, 1);
    frame = pool.publish(larger, 8, 8);
  }
  EXPECT_EQ(source.retired, source.made);
  std::memset(frame->bytes(), 1, 256);  // still there: the address sanitizer watches
}

TEST(SegmentPool, GivesBackWhatIsFarTooLarge) {
  constexpr std::size_t large = 1280UL * 800 * 4;
  HeapSource source;
  SegmentPool pool(source, 3, [] {});
  PixelBufferRef held = pool.publish(pool.acquire(large), 1280, 800);
  pool.publish(pool.acquire(large), 1280, 800);
  pool.publish(pool.acquire(large / 3), 1280, 266);
  EXPECT_EQ(source.retired, 0) << "not worth it";
  pool.publish(pool.acquire(64), 4, 4);
  EXPECT_EQ(source.retired, 2) << "the first one is in use";
  held = nullptr;
  pool.publishLast(4, 4);
  EXPECT_EQ(source.retired, source.made - 1);
}

}  // namespace
}  // namespace velicor::screencapture
