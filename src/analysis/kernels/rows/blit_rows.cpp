#include "analysis/kernels/rows/rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "analysis/kernels/rows/blit_rows.cpp"
#include <hwy/foreach_target.h>

#include "analysis/kernels/rows/pixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace velicor::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
using plain::brighten;
using plain::copySwapped;
using plain::findBrightest;
using plain::mixRows;
using plain::sampleMixed;
#else

void copySwapped(const std::byte* from, std::byte* to, std::size_t count) {
  alignas(16) static constexpr std::uint8_t swapped[16] = {2,  1, 0, 3,  6,  5,  4,  7,
                                                           10, 9, 8, 11, 14, 13, 12, 15};
  const hn::Repartition<std::uint8_t, Words> bytes;
  const auto order = hn::LoadDup128(bytes, swapped);
  const auto copy = [&](std::size_t first) HWY_ATTR {
    const auto pixels = hn::BitCast(bytes, loadPixels(from + gpu::bytesPerPixel * first));
    storePixels(hn::BitCast(Words(), hn::TableLookupBytes(pixels, order)), to + gpu::bytesPerPixel * first);
  };
  if (!forVectors(count, copy)) plain::copySwapped(from, to, count);
}

void mixRows(const std::byte* upper, const std::byte* lower, std::uint32_t weight, MixedTexel* to,
             std::size_t count) {
  const hn::ScalableTag<std::int16_t> d;
  const hn::Rebind<std::uint8_t, decltype(d)> bytes;
  const auto weights = hn::Set(d, static_cast<std::int16_t>(weight));
  const auto lowest = hn::Set(d, std::int16_t{-32768});
  const std::size_t texels = hn::Lanes(d) / std::tuple_size_v<MixedTexel>;
  std::size_t i = 0;
  for (; i + texels <= count; i += texels) {
    const std::size_t at = gpu::bytesPerPixel * i;
    const auto above = hn::PromoteTo(d, hn::LoadU(bytes, reinterpret_cast<const std::uint8_t*>(upper + at)));
    const auto below = hn::PromoteTo(d, hn::LoadU(bytes, reinterpret_cast<const std::uint8_t*>(lower + at)));
    // 256 × above + weight × (below − above): in 16 bits that wrap, less 32768 is the other sign bit.
    const auto mixed = hn::Add(hn::ShiftLeft<8>(above), hn::Mul(hn::Sub(below, above), weights));
    hn::StoreU(hn::Xor(mixed, lowest), d, to[i].data());
  }
  const std::size_t at = gpu::bytesPerPixel * i;
  plain::mixRows(upper + at, lower + at, weight, to + i, count - i);
}

// One pixel at a time, its four channels side by side.
void sampleMixed(const MixedTexel* texels, const Tap* taps, std::size_t count, bool swapsRedAndBlue,
                 std::byte* to) {
  const hn::CappedTag<std::int16_t, 8> d;
  const hn::CappedTag<std::int32_t, 4> sums;
  const hn::CappedTag<std::uint8_t, 16> bytes;
  // The left and the right texel's channels as neighbours.
  alignas(16) static constexpr std::uint8_t paired[16] = {0, 1, 8,  9,  2, 3, 10, 11,
                                                          4, 5, 12, 13, 6, 7, 14, 15};
  // The third byte of each sum.
  alignas(16) static constexpr std::uint8_t thirds[2][16] = {
      {2, 6, 10, 14, 2, 6, 10, 14, 2, 6, 10, 14, 2, 6, 10, 14},
      {10, 6, 2, 14, 10, 6, 2, 14, 10, 6, 2, 14, 10, 6, 2, 14}};
  const auto pairing = hn::Load(bytes, paired);
  const auto picking = hn::Load(bytes, thirds[swapsRedAndBlue ? 1 : 0]);
  // What the texels lack, 32768 × 256, and a half to round.
  const auto start = hn::Set(sums, 32768 * 257);
  for (std::size_t i = 0; i < count; ++i, to += gpu::bytesPerPixel) {
    const auto both = hn::LoadU(d, texels[taps[i].texel].data());
    const auto channels = hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(bytes, both), pairing));
    const auto weights = hn::BitCast(
        d, hn::Set(sums, static_cast<std::int32_t>(taps[i].weight << 16 | (256 - taps[i].weight))));
    auto second = hn::Zero(sums);
    const auto first = hn::ReorderWidenMulAccumulate(sums, channels, weights, hn::Zero(sums), second);
    const auto sum = hn::Add(start, hn::RearrangeToOddPlusEven(first, second));
    const auto pixel = hn::TableLookupBytes(hn::BitCast(bytes, sum), picking);
    store(to, hn::GetLane(hn::BitCast(hn::CappedTag<Packed, 4>(), pixel)));
  }
}

void brighten(std::byte* texels, const std::byte* other, std::size_t count) {
  const hn::Repartition<std::uint8_t, Words> bytes;
  const auto raise = [&](std::size_t first) HWY_ATTR {
    std::byte* at = texels + gpu::bytesPerPixel * first;
    const auto raised = hn::Max(hn::BitCast(bytes, loadPixels(at)),
                                hn::BitCast(bytes, loadPixels(other + gpu::bytesPerPixel * first)));
    storePixels(hn::BitCast(Words(), raised), at);
  };
  if (!forVectors(count, raise)) plain::brighten(texels, other, count);
}

// One pixel at a time, its four channels side by side.
void findBrightest(const std::byte* texels, const TexelRun* runs, std::size_t count, bool swapsRedAndBlue,
                   std::byte* to) {
  const hn::CappedTag<std::uint8_t, 4> channels;
  const hn::CappedTag<Packed, 1> whole;
  const auto* from = reinterpret_cast<const std::uint8_t*>(texels);
  for (std::size_t i = 0; i < count; ++i, to += gpu::bytesPerPixel) {
    auto brightest = hn::Zero(channels);
    for (std::int32_t texel = runs[i].begin; texel < runs[i].end; ++texel)
      brightest = hn::Max(brightest,
                          hn::LoadU(channels, from + gpu::bytesPerPixel * static_cast<std::size_t>(texel)));
    const Packed pixel = hn::GetLane(hn::BitCast(whole, brightest));
    store(to, swapsRedAndBlue ? swapped(pixel) : pixel);
  }
}

#endif

}  // namespace velicor::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velicor::kernels {

HWY_EXPORT(brighten);
HWY_EXPORT(copySwapped);
HWY_EXPORT(findBrightest);
HWY_EXPORT(mixRows);
HWY_EXPORT(sampleMixed);

void copySwapped(const std::byte* from, std::byte* to, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(copySwapped)(from, to, count);
}

void mixRows(const std::byte* upper, const std::byte* lower, std::uint32_t weight, MixedTexel* to,
             std::size_t count) {
  HWY_DYNAMIC_DISPATCH(mixRows)(upper, lower, weight, to, count);
}

void sampleMixed(const MixedTexel* texels, const Tap* taps, std::size_t count, bool swapsRedAndBlue,
                 std::byte* to) {
  HWY_DYNAMIC_DISPATCH(sampleMixed)(texels, taps, count, swapsRedAndBlue, to);
}

void brighten(std::byte* texels, const std::byte* other, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(brighten)(texels, other, count);
}

void findBrightest(const std::byte* texels, const TexelRun* runs, std::size_t count, bool swapsRedAndBlue,
                   std::byte* to) {
  HWY_DYNAMIC_DISPATCH(findBrightest)(texels, runs, count, swapsRedAndBlue, to);
}

}  // namespace velicor::kernels
#endif
