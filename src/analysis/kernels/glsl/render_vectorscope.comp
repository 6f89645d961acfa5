#version 450
#include "pictures.glsl"

layout(local_size_x = 16, local_size_y = 16, local_size_x_id = 0, local_size_y_id = 1) in;

layout(binding = 8, rgba8) uniform restrict writeonly image2D image;
layout(std430, binding = 16) restrict readonly buffer Counters { uint counters[]; };
layout(std430, binding = 17) restrict readonly buffer Gain { float gain; };

void main() {
  const uvec2 place = gl_GlobalInvocationID.xy;
  if (isOutside(place, min(imageSize(image), ivec2(vectorscopeSide)))) return;
  const uvec2 bin = place / 2;
  imageStore(image, ivec2(place), tracePixel(counters[bin.y * scopeBins + bin.x], vectorscopeTint, gain));
}
