#version 450
#include "pictures.glsl"
#include "texels.glsl"

void main() {
  const ivec2 size = textureSize(source, 0);
  const ivec2 position = positionOf(coordinate, size);
  if (isBeyond(position, size)) discard;
  color = vec4(mixedAt(position, size)) / 255.0;
}
