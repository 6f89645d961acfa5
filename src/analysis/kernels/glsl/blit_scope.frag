#version 450
#include "pictures.glsl"
#include "texels.glsl"

// Edges between texels, rounded to 1/1024 texel, are exact hits where they should be.
const int steps = 1024;

// Moved up by some texels, truncation rounds the same way on both sides of zero.
ivec2 inSteps(vec2 texels) {
  const float raised = 64.0;
  return ivec2((texels + raised) * float(steps) + 0.5) - int(raised) * steps;
}

// The brightest of all texels that a pixel covers, channel by channel. The outermost pixels cover what lies beyond
// them as well: their neighbours' centers are outside, and nothing else would show it.
ivec4 brightestAt(vec2 center, vec2 extent, ivec2 size) {
  const bvec2 isFirst = lessThan(inSteps(center - extent), ivec2(0));
  const bvec2 isLast = greaterThanEqual(inSteps(center + extent), size * steps);
  const ivec2 begin = min(mix(inSteps(center - extent * 0.5) / steps, ivec2(0), isFirst), size - 1);
  const ivec2 end = max(mix((inSteps(center + extent * 0.5) + steps - 1) / steps, size, isLast), begin + 1);
  ivec4 brightest = ivec4(0);
  for (int y = begin.y; y < end.y; ++y) {
    for (int x = begin.x; x < end.x; ++x) brightest = max(brightest, texelAt(x, y));
  }
  return brightest;
}

void main() {
  const ivec2 size = textureSize(source, 0);
  // Of a pixel, in texels.
  const vec2 extent = abs(vec2(dFdx(coordinate.x), dFdy(coordinate.y))) * vec2(size);
  const ivec2 position = positionOf(coordinate, size);
  if (isBeyond(position, size)) discard;
  const bool isReduced = any(greaterThan(inSteps(extent), ivec2(steps)));
  const ivec4 bytes = isReduced ? brightestAt(coordinate * vec2(size), extent, size) : mixedAt(position, size);
  color = vec4(max(bytes, ivec4(ivec3(scopeGround), 0))) / 255.0;
}
