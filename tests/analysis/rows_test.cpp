// The vector forms of the native kernels' rows against the plain ones, for every kind of vectors that this
// processor has.
#include "analysis/kernels/rows/rows.h"

#include <functional>
#include <numeric>
#include <random>

#include <gmock/gmock.h>
#include <hwy/targets.h>

namespace velicor::kernels {
namespace {

using gpu::PixelFormat;

constexpr PixelFormat bothOrders[] = {PixelFormat::bgra8Unorm, PixelFormat::rgba8Unorm};

template <typename T>
std::byte* bytesOf(std::vector<T>& values) {
  return std::as_writable_bytes(std::span(values)).data();
}

class RowsTest : public testing::Test {
 protected:
  ~RowsTest() override { hwy::GetChosenTarget().Update(hwy::SupportedTargets()); }

  static void forEveryTarget(const std::function<void()>& check) {
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
      SCOPED_TRACE(hwy::TargetName(target));
      hwy::GetChosenTarget().Update(target);
      check();
    }
  }

  template <typename T>
  std::vector<T> random(std::size_t count) {
    std::vector<T> values(count);
    for (T& value : values)
      value = static_cast<T>(random_());
    return values;
  }

  // All three functions of a pixel's colour.
  void expectSameColors(const std::vector<Packed>& pixels, PixelFormat format) {
    const auto count = pixels.size();
    const SourceRow from{std::as_bytes(std::span(pixels)).data(), format};
    std::vector<Packed> expected(count), found(count);
    plain::paintSkin(from, bytesOf(expected), count, zones_);
    paintSkin(from, bytesOf(found), count, zones_);
    ASSERT_TRUE(found == expected);
    plain::paintHeat(from, bytesOf(expected), count, heat_);
    paintHeat(from, bytesOf(found), count, heat_);
    ASSERT_TRUE(found == expected);
    plain::findChromaBins(from, expected.data(), count);
    findChromaBins(from, found.data(), count);
    ASSERT_TRUE(found == expected);
  }

  std::mt19937 random_{5};
  ZoneColors zones_{0xFF010203, 0xFF040506, 0xFF070809};
  HeatColors heat_ = [] {
    HeatColors steps;
    std::iota(steps.begin(), steps.end(), 0U);
    return steps;
  }();
};

// The processor's best vectors on every colour that there is, the others on a share of them.
TEST_F(RowsTest, EveryColourIsPaintedAndCountedAlike) {
  std::uint32_t step = 1;
  forEveryTarget([&] {
    std::vector<Packed> pixels(65536);
    for (std::uint32_t red = 0; red < 256; red += step) {
      for (std::uint32_t others = 0; others < 65536; ++others)
        pixels[others] = static_cast<Packed>(random_()) << 24 | others << 8 | red;
      ASSERT_NO_FATAL_FAILURE(expectSameColors(pixels, bothOrders[red % 2]));
    }
    step = 15;
  });
}

TEST_F(RowsTest, RowsOfAnyLengthAreDoneWhole) {
  const auto pixels = random<Packed>(72), counters = random<std::uint32_t>(72);
  forEveryTarget([&] {
    for (std::size_t count = 0; count <= 70; ++count) {
      const std::vector row(pixels.begin(), pixels.begin() + static_cast<std::ptrdiff_t>(count));
      for (const PixelFormat format : bothOrders)
        ASSERT_NO_FATAL_FAILURE(expectSameColors(row, format));
      // From an odd byte on, and nothing behind the end.
      const auto expectSame = [&](auto write) {
        std::vector<std::byte> expected(300, std::byte{7}), found = expected;
        write(true, expected.data() + 1);
        write(false, found.data() + 1);
        ASSERT_TRUE(found == expected) << count;
        ASSERT_EQ(found[1 + 4 * count], std::byte{7});
      };
      const auto* from = std::as_bytes(std::span(pixels)).data() + 3;
      expectSame([&](bool isPlain, std::byte* to) {
        (isPlain ? plain::copySwapped : copySwapped)(from, to, count);
      });
      expectSame([&](bool isPlain, std::byte* to) {
        (isPlain ? plain::paintSkin : paintSkin)({from, PixelFormat::bgra8Unorm}, to, count, zones_);
      });
      // Nine rows of them, in part empty.
      std::vector<std::uint32_t> moved(9 * count), expected(9 * (count + 3), 5), found = expected;
      for (std::size_t i = 0; i < moved.size(); ++i)
        moved[i] = i / 16 % 3 == 0 ? 0 : counters[i % counters.size()];
      auto plainlyMoved = moved;
      plain::moveCounters(plainlyMoved.data(), count, expected.data(), count + 3, 9);
      moveCounters(moved.data(), count, found.data(), count + 3, 9);
      ASSERT_EQ(found, expected);
      ASSERT_EQ(moved, plainlyMoved);
    }
  });
}

TEST_F(RowsTest, CountersAreTracedAlike) {
  const auto colors = random<Packed>(300);
  std::vector<std::uint32_t> counters(257), expected(257), found(257);
  forEveryTarget([&] {
    for (const std::uint32_t last : {0U, 1U, 7U, 299U}) {
      for (std::uint32_t& counter : counters)
        counter = random_() % 3 == 0 ? 0 : static_cast<std::uint32_t>(random_()) >> random_() % 32;
      std::fill_n(counters.begin(), 64, 0U);
      plain::traceCounters(counters.data(), counters.size(), colors.data(), last, expected.data());
      traceCounters(counters.data(), counters.size(), colors.data(), last, found.data());
      ASSERT_EQ(found, expected) << last;
    }
  });
}

TEST_F(RowsTest, TheBrightestIsFoundAlike) {
  forEveryTarget([&] {
    for (std::size_t count = 1; count < 70; ++count) {
      const auto texels = random<Packed>(count);
      auto other = random<Packed>(count);
      std::vector<Packed> expected = texels, found = texels;
      plain::brighten(bytesOf(expected), bytesOf(other), count);
      brighten(bytesOf(found), bytesOf(other), count);
      ASSERT_EQ(found, expected) << count;
      std::vector<TexelRun> runs(count);
      for (TexelRun& run : runs) {
        const auto begin = static_cast<std::int32_t>(random_() % count);
        run = {begin,
               begin + 1 + static_cast<std::int32_t>(random_() % (count - static_cast<std::size_t>(begin)))};
      }
      plain::findBrightest(bytesOf(other), runs.data(), count, count % 2, bytesOf(expected));
      findBrightest(bytesOf(other), runs.data(), count, count % 2, bytesOf(found));
      ASSERT_EQ(found, expected) << count;
    }
  });
}

TEST_F(RowsTest, TexelsAreMixedAlike) {
  forEveryTarget([&] {
    for (std::uint32_t weight = 0; weight < 256; ++weight) {
      const std::size_t count = 1 + weight % 70;
      auto upper = random<Packed>(count), lower = random<Packed>(count);
      upper.back() = 0xFFFFFFFF;
      std::vector<MixedTexel> expected(count + 2), found(count + 2);
      plain::mixRows(bytesOf(upper), bytesOf(lower), weight, &expected[1], count);
      mixRows(bytesOf(upper), bytesOf(lower), weight, &found[1], count);
      ASSERT_EQ(found, expected) << weight;
      std::vector<Tap> taps(count);
      for (Tap& tap : taps)
        tap = {static_cast<std::int32_t>(random_() % (count + 1)) - 1,
               static_cast<std::uint32_t>(random_() % 256)};
      std::vector<Packed> expectedPixels(count), pixels(count);
      plain::sampleMixed(&expected[1], taps.data(), count, weight % 2, bytesOf(expectedPixels));
      sampleMixed(&expected[1], taps.data(), count, weight % 2, bytesOf(pixels));
      ASSERT_EQ(pixels, expectedPixels) << weight;
    }
  });
}

}  // namespace
}  // namespace velicor::kernels
