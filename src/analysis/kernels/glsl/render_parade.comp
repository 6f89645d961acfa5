#version 450
#include "pictures.glsl"

layout(local_size_x = 16, local_size_y = 16, local_size_x_id = 0, local_size_y_id = 1) in;

layout(binding = 8, rgba8) uniform restrict writeonly image2D image;
layout(std430, binding = 16) restrict readonly buffer Counters { uint counters[]; };
layout(std430, binding = 17) restrict readonly buffer Gain { float gain; };

void main() {
  const uvec2 place = gl_GlobalInvocationID.xy;
  if (isOutside(place, min(imageSize(image), ivec2(paradeWidth, paradeHeight)))) return;
  const uint panel = place.x / (scopeBins + paradeGap);
  const uint column = place.x % (scopeBins + paradeGap);
  const uint level = paradeHeight - 1 - place.y;
  vec4 pixel = opaque(ivec3(0));
  if (column < scopeBins) {
    const uint samples = counters[panel * planeCounters + level * scopeBins + column];
    pixel = tracePixel(samples, paradeTints[panel], gain);
  }
  imageStore(image, ivec2(place), pixel);
}
