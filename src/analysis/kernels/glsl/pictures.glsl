// What the kernels have in common: the formulas and layouts that C++ shares with them, and pixels in and out.
#define constexpr
#define Tint vec3
#include "analysis/kernels/shared/pictures.inc"
#include "analysis/kernels/shared/pixel_formulas.inc"

const uint planeCounters = scopeBins * scopeBins;

// A texel's components as the bytes that they were.
ivec4 bytesOf(vec4 texel) { return ivec4(texel * 255.0 + 0.5); }

Pixel pixelOf(vec4 texel) {
  const ivec4 bytes = bytesOf(texel);
  return Pixel(bytes.r, bytes.g, bytes.b);
}

vec4 opaque(ivec3 bytes) { return vec4(vec3(bytes) / 255.0, 1.0); }

bool isOutside(uvec2 place, ivec2 size) { return any(greaterThanEqual(place, uvec2(size))); }

// The pixel of a counter: the tint at the brightness min(1, log2(1 + count) × gain).
vec4 tracePixel(uint count, vec3 tint, float gain) {
  const float brightness = min(1.0, log2(1.0 + float(count)) * gain);
  return opaque(ivec3(byteOf(tint.r * brightness), byteOf(tint.g * brightness), byteOf(tint.b * brightness)));
}
