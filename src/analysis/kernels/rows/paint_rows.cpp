#include "analysis/kernels/rows/rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "analysis/kernels/rows/paint_rows.cpp"
#include <hwy/foreach_target.h>

#include "analysis/kernels/rows/pixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace velicor::kernels::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
using plain::paintHeat;
using plain::paintSkin;
#else

// A little more than 1 / lumaUnit: products that lie half way between two greys, which round up, come out
// above, and none passes a half that it should not. 1 / heatStep serves as it is. Both hold for every luma;
// a test goes through all colours.
constexpr float greyShare = 0x1.a36e32p-14F;
constexpr float heatShare = 1.0F / color::heatStep;

HWY_INLINE WordVector opaqueGrey(NumberVector luma) {
  // Behind a number as large as this there is no room for a fraction: the lowest byte of a sum is the nearest
  // whole number.
  constexpr float noFraction = 0x1p23F;
  alignas(16) static constexpr std::uint8_t lowestThrice[16] = {0, 0, 0, 3,  4,  4,  4,  7,
                                                                8, 8, 8, 11, 12, 12, 12, 15};
  const hn::Repartition<std::uint8_t, Words> bytes;
  const auto grey = hn::Mul(hn::ConvertTo(Reals(), luma), hn::Set(Reals(), greyShare));
  const auto rounded = hn::BitCast(bytes, hn::Add(grey, hn::Set(Reals(), noFraction)));
  const auto spread = hn::TableLookupBytes(rounded, hn::LoadDup128(bytes, lowestThrice));
  return hn::Or(hn::BitCast(Words(), spread), hn::Set(Words(), packed({0, 0, 0, 255})));
}

// Cb and Cr with their signs changed, so that their largest weight fits; sides and limits follow suit. What
// chromaOf() rounds down is rounded up here.
class NegativeChroma {
 public:
  explicit HWY_INLINE NegativeChroma(gpu::PixelFormat format)
      : cb_(format, 120138, 404150, -524288, 4095), cr_(format, -524288, 476214, 48074, 4095) {}

  // Pairs of −Cb and −Cr.
  HWY_INLINE HalfVector of(const Channels& channels) const {
    return hn::OddEven(hn::BitCast(Halves(), hn::ShiftLeft<4>(cr_.of(channels))),
                       hn::BitCast(Halves(), hn::ShiftRight<12>(cb_.of(channels))));
  }

 private:
  LinearForm cb_;
  LinearForm cr_;
};

// Negative for a colour clockwise of the ray, or counter-clockwise of it.
HWY_INLINE NumberVector clockwiseOf(color::Ray ray, HalfVector negativeChroma) {
  return PairSum().add(negativeChroma, pairs(ray.sine, -ray.cosine)).total();
}
HWY_INLINE NumberVector counterClockwiseOf(color::Ray ray, HalfVector negativeChroma) {
  return PairSum().add(negativeChroma, pairs(-ray.sine, ray.cosine)).total();
}

// Negative where skinZone() is zoneNotSkin.
HWY_INLINE NumberVector notSkin(NumberVector luma, HalfVector negativeChroma) {
  const Numbers d;
  const auto squared = PairSum().add(negativeChroma, negativeChroma).total();
  constexpr int minSquared = color::minSkinChroma * color::minSkinChroma;
  constexpr int maxSquared = color::maxSkinChroma * color::maxSkinChroma;
  const auto outsideLuma =
      hn::Or(hn::Sub(luma, hn::Set(d, color::minSkinLuma)), hn::Sub(hn::Set(d, color::maxSkinLuma), luma));
  const auto outsideChroma =
      hn::Or(hn::Sub(squared, hn::Set(d, minSquared)), hn::Sub(hn::Set(d, maxSquared), squared));
  const auto outsideWedge = hn::Or(clockwiseOf(color::pinkEnd, negativeChroma),
                                   counterClockwiseOf(color::greenEnd, negativeChroma));
  return hn::Or(hn::Or(outsideLuma, outsideChroma), outsideWedge);
}

void paintSkin(SourceRow from, std::byte* to, std::size_t count, const ZoneColors& zones) {
  const Numbers d;
  const ShortLinearForm lumaOf = lumaForm(from.format);
  const NegativeChroma chromaOf(from.format);
  const auto colorOf = [&](int zone) HWY_ATTR {
    return hn::BitCast(d, hn::Set(Words(), zones[static_cast<std::size_t>(zone)]));
  };
  const auto onLine = colorOf(color::zoneOnLine), green = colorOf(color::zoneGreen),
             pink = colorOf(color::zonePink);
  const auto paint = [&](std::size_t first) HWY_ATTR {
    const Channels channels = channelsOf(loadPixels(from.pixels + gpu::bytesPerPixel * first));
    const auto luma = lumaOf.of(channels);
    const auto chroma = chromaOf.of(channels);
    auto color = hn::IfNegativeThenElse(clockwiseOf(color::onLinePink, chroma), pink, onLine);
    color = hn::IfNegativeThenElse(counterClockwiseOf(color::onLineGreen, chroma), green, color);
    color = hn::IfNegativeThenElse(notSkin(luma, chroma), hn::BitCast(d, opaqueGrey(luma)), color);
    storePixels(hn::BitCast(Words(), color), to + gpu::bytesPerPixel * first);
  };
  if (!forVectors(count, paint)) plain::paintSkin(from, to, count, zones);
}

void paintHeat(SourceRow from, std::byte* to, std::size_t count, const HeatColors& heat) {
  const ShortLinearForm lumaOf = lumaForm(from.format);
  const auto paint = [&](std::size_t first) HWY_ATTR {
    const auto luma = lumaOf.of(channelsOf(loadPixels(from.pixels + gpu::bytesPerPixel * first)));
    const auto step =
        hn::ConvertTo(Numbers(), hn::Mul(hn::ConvertTo(Reals(), luma), hn::Set(Reals(), heatShare)));
    storePixels(hn::GatherIndex(Words(), heat.data(), step), to + gpu::bytesPerPixel * first);
  };
  if (!forVectors(count, paint)) plain::paintHeat(from, to, count, heat);
}

#endif

}  // namespace velicor::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velicor::kernels {

HWY_EXPORT(paintSkin);
HWY_EXPORT(paintHeat);

void paintSkin(SourceRow from, std::byte* to, std::size_t count, const ZoneColors& zones) {
  HWY_DYNAMIC_DISPATCH(paintSkin)(from, to, count, zones);
}

void paintHeat(SourceRow from, std::byte* to, std::size_t count, const HeatColors& heat) {
  HWY_DYNAMIC_DISPATCH(paintHeat)(from, to, count, heat);
}

}  // namespace velicor::kernels
#endif
