#pragma once

// The colour facts that everything in the analysis agrees on: kernels, graticules and tests. Nothing else in
// the sources spells them out.
namespace velicor::color {

// Luma and colour difference on the encoded screen values R, G, B, full range 0…1 (ITU-R BT.709):
//   Y = 0.2126 R + 0.7152 G + 0.0722 B    Cb = (B − Y) / 1.8556    Cr = (R − Y) / 1.5748
// Cb and Cr lie in −0.5…0.5.
inline constexpr double lumaRed = 0.2126;
inline constexpr double lumaGreen = 0.7152;
inline constexpr double lumaBlue = 0.0722;
inline constexpr double cbDivisor = 1.8556;
inline constexpr double crDivisor = 1.5748;

// The skin-tone line: a half-line from the origin of this plane, counter-clockwise from +Cb.
inline constexpr double skinLineDegrees = 123;

// Where the skin indicator draws its borders. δ is the hue's distance from the line in degrees, positive
// towards green; chroma is √(Cb² + Cr²) as a share of 0.5. Borders belong to the zone nearer to the line.
struct SkinZones {
  double onLine = 6;          // on the line: |δ| ≤ 6
  double driftingGreen = 30;  // 6 < δ ≤ 30
  double driftingPink = -20;  // −20 ≤ δ < −6
  double minChroma = 0.05;    // outside these limits, and for every other hue: not skin
  double maxChroma = 0.45;
  double minLuma = 0.08;
  double maxLuma = 0.95;
};
inline constexpr SkinZones skinZones;

}  // namespace velicor::color
