#version 450
#include "pictures.glsl"

layout(local_size_x = 16, local_size_y = 16, local_size_x_id = 0, local_size_y_id = 1) in;

layout(binding = 0) uniform sampler2D source;
layout(binding = 9, rgba8) uniform restrict writeonly image2D preview;
layout(std430, binding = 16) restrict readonly buffer Mode { uint mode; };
layout(std430, binding = 17) restrict readonly buffer Offset { uvec2 offset; };
layout(std430, binding = 18) restrict readonly buffer Colors { vec4 palette[3 + heatColors]; };

const uint skinMode = 1;

ivec3 skinColor(Pixel pixel, int luma) {
  const int zone = skinZone(pixel, luma);
  if (zone == zoneNotSkin) return ivec3(greyOf(luma));
  const vec4 color = palette[zone];
  return ivec3(byteOf(color.r), byteOf(color.g), byteOf(color.b));
}

ivec3 heatColor(int luma) {
  const HeatPlace place = heatPlace(heatIndex(luma));
  const vec4 below = palette[3 + place.entry];
  const vec4 above = palette[3 + min(place.entry + 1, heatColors - 1)];
  return ivec3(heatByte(below.r, above.r, place.share), heatByte(below.g, above.g, place.share),
               heatByte(below.b, above.b, place.share));
}

void main() {
  const uvec2 to = gl_GlobalInvocationID.xy;
  const uvec2 from = to + offset;
  if (isOutside(to, imageSize(preview)) || isOutside(from, textureSize(source, 0))) return;
  const Pixel pixel = pixelOf(texelFetch(source, ivec2(from), 0));
  const int luma = lumaOf(pixel);
  imageStore(preview, ivec2(to), opaque(mode == skinMode ? skinColor(pixel, luma) : heatColor(luma)));
}
