#version 450
#include "pictures.glsl"

layout(local_size_x = 16, local_size_y = 16, local_size_x_id = 0, local_size_y_id = 1) in;

layout(binding = 0) uniform sampler2D source;
layout(std430, binding = 16) restrict buffer Vectorscope { uint vectorscope[]; };
layout(std430, binding = 17) restrict buffer Parade { uint parade[]; };
layout(std430, binding = 18) restrict readonly buffer Area { uvec4 area; };  // x, y, width, height
layout(std430, binding = 19) restrict readonly buffer Stride { uint stride; };

// Where a picture has one colour, all its samples meet in the same few counters, which would take them one
// after the other. So each threadgroup counts for itself first: equal samples below each other make one
// entry, and equal entries meet in a small table of the threadgroup's own. An entry whose place there is
// taken by another bin goes straight to the counters.
const uint planes = 4;  // parade red, green, blue, and the vectorscope
const uint vectorscopePlane = 3;
const uint groupWidth = gl_WorkGroupSize.x;
const uint groupSize = gl_WorkGroupSize.x * gl_WorkGroupSize.y;
const uint noSample = 0xFFFFFFFFu;
const uint tableSize = 256;

shared uint bins[planes][groupSize];   // of every thread's sample
shared uint table[planes][tableSize];  // bin << 16 | samples; 0 is a free place

void findBins(uint thread) {
  const uvec2 place = gl_GlobalInvocationID.xy * max(stride, 1u);
  const uvec2 from = area.xy + place;
  if (isOutside(place, ivec2(area.zw)) || isOutside(from, textureSize(source, 0))) {
    for (uint plane = 0; plane < planes; ++plane)
      bins[plane][thread] = noSample;
    return;
  }
  const Pixel pixel = pixelOf(texelFetch(source, ivec2(from), 0));
  const int luma = lumaOf(pixel);
  const uint column = place.x * scopeBins / area.z;
  bins[0][thread] = pixel.r * scopeBins + column;
  bins[1][thread] = pixel.g * scopeBins + column;
  bins[2][thread] = pixel.b * scopeBins + column;
  bins[vectorscopePlane][thread] = crBin(pixel, luma) * scopeBins + cbBin(pixel, luma);
}

// How many samples from this thread's on down are in its bin; 0 where the one above is too.
uint runLength(uint plane, uint thread) {
  const uint bin = bins[plane][thread];
  if (bin == noSample || (thread >= groupWidth && bins[plane][thread - groupWidth] == bin)) return 0;
  uint length = 1;
  for (uint below = thread + groupWidth; below < groupSize && bins[plane][below] == bin; below += groupWidth)
    ++length;
  return length;
}

void count(uint plane, uint bin, uint samples) {
  if (plane == vectorscopePlane) {
    atomicAdd(vectorscope[bin], samples);
  } else {
    atomicAdd(parade[plane * planeCounters + bin], samples);
  }
}

void countInTable(uint plane, uint bin, uint samples) {
  const uint place = (bin * 2654435769u) >> 24;  // golden-ratio hashing, 0 … tableSize − 1
  const uint found = atomicCompSwap(table[plane][place], 0u, bin << 16 | samples);
  if (found == 0) return;
  if (found >> 16 == bin) {
    atomicAdd(table[plane][place], samples);
  } else {
    count(plane, bin, samples);
  }
}

void main() {
  const uint thread = gl_LocalInvocationIndex;
  findBins(thread);
  for (uint plane = 0; plane < planes; ++plane) {
    for (uint place = thread; place < tableSize; place += groupSize)
      table[plane][place] = 0;
  }
  barrier();
  for (uint plane = 0; plane < planes; ++plane) {
    const uint samples = runLength(plane, thread);
    if (samples > 0) countInTable(plane, bins[plane][thread], samples);
  }
  barrier();
  for (uint plane = 0; plane < planes; ++plane) {
    for (uint place = thread; place < tableSize; place += groupSize) {
      const uint entry = table[plane][place];
      if (entry > 0) count(plane, entry >> 16, entry & 0xFFFFu);
    }
  }
}
