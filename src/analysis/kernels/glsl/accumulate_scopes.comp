#version 450
#include "pictures.glsl"

layout(local_size_x = 16, local_size_y = 16, local_size_x_id = 0, local_size_y_id = 1) in;

layout(binding = 0) uniform sampler2D source;
layout(std430, binding = 16) restrict buffer Vectorscope { uint vectorscope[]; };
layout(std430, binding = 17) restrict buffer Parade { uint parade[]; };
layout(std430, binding = 18) restrict readonly buffer Area { uvec4 area; };  // x, y, width, height
layout(std430, binding = 19) restrict readonly buffer Stride { uint stride; };

// Where a picture has one colour, all its samples meet in the same few counters, which would take them one
// after the other. So each threadgroup counts in small tables of its own first, and adds what is there to the
// counters at its end. A sample whose place in a table is taken by another bin goes straight to the counters.
const uint planes = 4;  // parade red, green, blue, and the vectorscope
const uint vectorscopePlane = 3;
const uint tableSize = 256;
shared uint table[planes][tableSize];  // bin << 16 | samples; 0 is a free place

void count(uint plane, uint bin, uint samples) {
  if (plane == vectorscopePlane) {
    atomicAdd(vectorscope[bin], samples);
  } else {
    atomicAdd(parade[plane * planeCounters + bin], samples);
  }
}

// Golden-ratio hashing. A bin has four places, so that neighbours in a plain area don't wait for each other.
uint placeOf(uint bin) { return ((bin * 2654435769u) >> 24) ^ (gl_LocalInvocationIndex & 3); }

void countInTable(uint plane, uint bin) {
  const uint place = placeOf(bin);
  const uint found = atomicCompSwap(table[plane][place], 0u, bin << 16 | 1u);
  if (found == 0) return;
  if (found >> 16 == bin) {
    atomicAdd(table[plane][place], 1u);
  } else {
    count(plane, bin, 1u);
  }
}

void sampleAt(uvec2 place) {
  const uvec2 from = area.xy + place;
  if (isOutside(place, ivec2(area.zw)) || isOutside(from, textureSize(source, 0))) return;
  const Pixel pixel = pixelOf(texelFetch(source, ivec2(from), 0));
  const int luma = lumaOf(pixel);
  const uint column = place.x * scopeBins / area.z;
  countInTable(0, pixel.r * scopeBins + column);
  countInTable(1, pixel.g * scopeBins + column);
  countInTable(2, pixel.b * scopeBins + column);
  countInTable(vectorscopePlane, crBin(pixel, luma) * scopeBins + cbBin(pixel, luma));
}

// Every thread has its share of the tables' places.
const uint threads = gl_WorkGroupSize.x * gl_WorkGroupSize.y;

void main() {
  for (uint plane = 0; plane < planes; ++plane) {
    for (uint place = gl_LocalInvocationIndex; place < tableSize; place += threads)
      table[plane][place] = 0;
  }
  barrier();
  sampleAt(gl_GlobalInvocationID.xy * max(stride, 1u));
  barrier();
  for (uint plane = 0; plane < planes; ++plane) {
    for (uint place = gl_LocalInvocationIndex; place < tableSize; place += threads) {
      const uint entry = table[plane][place];
      if (entry > 0) count(plane, entry >> 16, entry & 0xFFFFu);
    }
  }
}
