#include <algorithm>

#include "analysis/kernels/rows/rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "analysis/kernels/rows/scope_rows.cpp"
#include <hwy/foreach_target.h>

#include "analysis/kernels/rows/pixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace velicor::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
using plain::findChromaBins;
using plain::moveCounters;
using plain::traceCounters;
#else

// min(value × chromaBins / 2 / largest, chromaBins − 1) as a product with 2ᵏ × chromaBins / 2 / largest,
// rounded up. Values reach 2 × largest < 2²³; the product is too large by less than 2²³⁻ᵏ, which is less than
// what any quotient lacks to the next whole number.
template <int shift, std::int32_t largest>
HWY_INLINE WordVector binOf(NumberVector value) {
  constexpr std::uint64_t factor =
      ((std::uint64_t{1} << shift) * (color::chromaBins / 2) + largest - 1) / largest;
  static_assert(factor < std::uint64_t{1} << 32);
  static_assert((std::int64_t{1} << (shift - 23)) > largest);
  const Words d;
  const hn::RepartitionToWide<Words> wide;
  const auto words = hn::BitCast(d, value);
  const auto factors = hn::Set(d, static_cast<std::uint32_t>(factor));
  const auto even = hn::MulEven(words, factors);
  const auto odd = hn::MulEven(hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(wide, words))), factors);
  const auto quotients = hn::OddEven(hn::BitCast(d, hn::ShiftRight<shift - 32>(odd)),
                                     hn::BitCast(d, hn::ShiftRight<shift>(even)));
  return hn::Min(quotients, hn::Set(d, color::chromaBins - 1));
}

void findChromaBins(SourceRow from, std::uint32_t* bins, std::size_t count) {
  const Words d;
  // lumaUnit × B − luma + maxBlueMinusLuma, and the same for red, with its sign changed.
  const ShortLinearForm blue(from.format, -2126, -7152, color::lumaUnit - 722, color::maxBlueMinusLuma);
  const ShortLinearForm red(from.format, 2126 - color::lumaUnit, 7152, 722, color::maxRedMinusLuma);
  const auto find = [&](std::size_t first) HWY_ATTR {
    const Channels channels = channelsOf(loadPixels(from.pixels + gpu::bytesPerPixel * first));
    const auto column = binOf<46, color::maxBlueMinusLuma>(blue.of(channels));
    const auto row = binOf<45, color::maxRedMinusLuma>(red.of(channels));
    hn::StoreU(hn::Or(hn::ShiftLeft<8>(row), column), d, bins + first);
  };
  if (!forVectors(count, find)) plain::findChromaBins(from, bins, count);
}

void traceCounters(const std::uint32_t* counters, std::size_t count, const Packed* colors, std::uint32_t last,
                   Packed* to) {
  const Words d;
  const auto black = hn::Set(d, colors[0]);
  const std::size_t lanes = hn::Lanes(d);
  const auto lastLane = hn::Set(d, static_cast<std::uint32_t>(lanes - 1));
  const auto lastNear = hn::Set(d, std::min(static_cast<std::uint32_t>(2 * lanes - 1), last));
  const auto low = hn::LoadU(d, colors), high = hn::LoadU(d, colors + lanes);
  const auto trace = [&](std::size_t first) HWY_ATTR {
    const auto found = hn::LoadU(d, counters + first);
    // Most bins are empty in most pictures.
    if (hn::AllTrue(d, hn::Eq(found, hn::Zero(d)))) return hn::StoreU(black, d, to + first);
    // The colours of low counters are at hand.
    if (hn::AllTrue(d, hn::Eq(hn::Min(found, lastNear), found))) {
      const auto lane = hn::IndicesFromVec(d, hn::And(found, lastLane));
      const auto isLow = hn::Eq(hn::Min(found, lastLane), found);
      return hn::StoreU(
          hn::IfThenElse(isLow, hn::TableLookupLanes(low, lane), hn::TableLookupLanes(high, lane)), d,
          to + first);
    }
    const auto places = hn::BitCast(Numbers(), hn::Min(found, hn::Set(d, last)));
    hn::StoreU(hn::GatherIndex(d, colors, places), d, to + first);
  };
  if (!forVectors(count, trace)) plain::traceCounters(counters, count, colors, last, to);
}

void moveCounters(std::uint32_t* from, std::size_t columns, std::uint32_t* to, std::size_t pitch,
                  std::size_t rows) {
  const Words d;
  const auto none = hn::Zero(d);
  const std::size_t lanes = hn::Lanes(d);
  if (columns % lanes != 0) return plain::moveCounters(from, columns, to, pitch, rows);
  for (std::size_t y = 0; y < rows; ++y, from += columns, to += pitch) {
    for (std::size_t x = 0; x < columns; x += lanes) {
      const auto found = hn::LoadU(d, from + x);
      // Most counters are empty in most pictures.
      if (hn::AllTrue(d, hn::Eq(found, none))) continue;
      hn::StoreU(hn::Add(hn::LoadU(d, to + x), found), d, to + x);
      hn::StoreU(none, d, from + x);
    }
  }
}

#endif

}  // namespace velicor::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velicor::kernels {

HWY_EXPORT(findChromaBins);
HWY_EXPORT(traceCounters);
HWY_EXPORT(moveCounters);

void findChromaBins(SourceRow from, std::uint32_t* bins, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(findChromaBins)(from, bins, count);
}

void traceCounters(const std::uint32_t* counters, std::size_t count, const Packed* colors, std::uint32_t last,
                   Packed* to) {
  HWY_DYNAMIC_DISPATCH(traceCounters)(counters, count, colors, last, to);
}

void moveCounters(std::uint32_t* from, std::size_t columns, std::uint32_t* to, std::size_t pitch,
                  std::size_t rows) {
  HWY_DYNAMIC_DISPATCH(moveCounters)(from, columns, to, pitch, rows);
}

}  // namespace velicor::kernels
#endif
