// Included once for every kind of vectors, and so without the usual guard.
#if defined(VELICOR_ROWS_PIXELS) == defined(HWY_TARGET_TOGGLE)
#ifdef VELICOR_ROWS_PIXELS
#undef VELICOR_ROWS_PIXELS
#else
#define VELICOR_ROWS_PIXELS
#endif

#include <hwy/highway.h>

#include "analysis/kernels/rows/rows.h"

HWY_BEFORE_NAMESPACE();
namespace velicor::kernels::HWY_NAMESPACE {
#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

namespace hn = hwy::HWY_NAMESPACE;

// One pixel a lane. Sums of products come from pairs of 16-bit numbers, which vectors multiply and add at
// once.
using Words = hn::ScalableTag<std::uint32_t>;
using Numbers = hn::RebindToSigned<Words>;
using Halves = hn::Repartition<std::int16_t, Words>;
using Reals = hn::RebindToFloat<Words>;
using WordVector = hn::Vec<Words>;
using NumberVector = hn::Vec<Numbers>;
using HalfVector = hn::Vec<Halves>;

HWY_INLINE WordVector loadPixels(const std::byte* from) {
  const hn::Repartition<std::uint8_t, Words> bytes;
  return hn::BitCast(Words(), hn::LoadU(bytes, reinterpret_cast<const std::uint8_t*>(from)));
}

HWY_INLINE void storePixels(WordVector pixels, std::byte* to) {
  const hn::Repartition<std::uint8_t, Words> bytes;
  hn::StoreU(hn::BitCast(bytes, pixels), bytes, reinterpret_cast<std::uint8_t*>(to));
}

// The same pair in every lane.
HWY_INLINE HalfVector pairs(std::int32_t low, std::int32_t high) {
  return hn::BitCast(
      Halves(), hn::Set(Numbers(), static_cast<std::int32_t>((static_cast<std::uint32_t>(high) << 16) |
                                                             (static_cast<std::uint32_t>(low) & 0xFFFF))));
}

// start + a.low × b.low + a.high × b.high + … of each lane's pairs, within 32 bits. Which sums the two halves hold
// depends on the processor; only their end is each lane's own.
class PairSum {
 public:
  explicit HWY_INLINE PairSum(std::int32_t start = 0)
      : start_(hn::Set(Numbers(), start)), first_(hn::Zero(Numbers())), second_(hn::Zero(Numbers())) {}
  HWY_INLINE PairSum& add(HalfVector a, HalfVector b) {
    first_ = hn::ReorderWidenMulAccumulate(Numbers(), a, b, first_, second_);
    return *this;
  }
  HWY_INLINE NumberVector total() const { return hn::Add(start_, hn::RearrangeToOddPlusEven(first_, second_)); }

 private:
  NumberVector start_;
  NumberVector first_;
  NumberVector second_;
};

// The channels of pixels as pairs: first and third byte, the same 16 times, and green beside 16 times green.
struct Channels {
  HalfVector outer;
  HalfVector outer16;
  HalfVector green;
};

HWY_INLINE Channels channelsOf(WordVector pixels) {
  const auto outer = hn::BitCast(Halves(), hn::And(pixels, hn::Set(Words(), 0x00FF00FF)));
  const auto green = hn::And(pixels, hn::Set(Words(), 0x0000FF00));
  return {outer, hn::ShiftLeft<4>(outer),
          hn::BitCast(Halves(), hn::Or(hn::ShiftRight<8>(green), hn::ShiftLeft<12>(green)))};
}

// start + red × R + green × G + blue × B for one order of the channels. Weights reach from −2¹⁹ to 2¹⁹ − 1:
// too much for 16 bits, so that they are split into sixteens and the rest.
class LinearForm {
 public:
  HWY_INLINE LinearForm(gpu::PixelFormat format, std::int32_t red, std::int32_t green, std::int32_t blue,
                        std::int32_t start)
      : start_(start), green_(pairs(green & 15, green >> 4)) {
    const bool redFirst = format == gpu::PixelFormat::rgba8Unorm;
    const std::int32_t first = redFirst ? red : blue, third = redFirst ? blue : red;
    outer_ = pairs(first & 15, third & 15);
    outer16_ = pairs(first >> 4, third >> 4);
  }
  HWY_INLINE NumberVector of(const Channels& channels) const {
    return PairSum(start_)
        .add(channels.outer, outer_)
        .add(channels.outer16, outer16_)
        .add(channels.green, green_)
        .total();
  }

 private:
  std::int32_t start_;
  HalfVector outer_;
  HalfVector outer16_;
  HalfVector green_;
};

// The same with weights of 16 bits.
class ShortLinearForm {
 public:
  HWY_INLINE ShortLinearForm(gpu::PixelFormat format, std::int32_t red, std::int32_t green, std::int32_t blue,
                             std::int32_t start)
      : start_(start),
        outer_(format == gpu::PixelFormat::rgba8Unorm ? pairs(red, blue) : pairs(blue, red)),
        green_(pairs(green, 0)) {}
  HWY_INLINE NumberVector of(const Channels& channels) const {
    return PairSum(start_).add(channels.outer, outer_).add(channels.green, green_).total();
  }

 private:
  std::int32_t start_;
  HalfVector outer_;
  HalfVector green_;
};

HWY_INLINE ShortLinearForm lumaForm(gpu::PixelFormat format) { return {format, 2126, 7152, 722, 0}; }

// Calls work(first) for whole vectors of a row, the last of which may overlap the one before. False where the
// row is shorter than one.
template <typename Work>
HWY_INLINE bool forVectors(std::size_t count, const Work& work) {
  const std::size_t lanes = hn::Lanes(Words());
  if (count < lanes) return false;
  // The one call is inlined; two would not be.
  for (std::size_t done = 0; done < count; done += lanes)
    work(done < count - lanes ? done : count - lanes);
  return true;
}

#endif
}  // namespace velicor::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
