// What is drawn from a texture: where a pixel lies in it, and what is there.
layout(binding = 0) uniform sampler2D source;

layout(location = 0) noperspective in vec2 coordinate;
layout(location = 0) out vec4 color;

// In 1/256 of a texel, from the first one's center. Moved up by a few texels, truncation rounds the same way
// on both sides of zero; what lies further down is outside.
ivec2 positionOf(vec2 coordinate, ivec2 size) {
  const float texels = 4.0;
  return ivec2((coordinate * vec2(size) - 0.5 + texels) * 256.0 + 0.5) - int(texels) * 256;
}

// More than half a texel beyond the outermost centers.
bool isBeyond(ivec2 position, ivec2 size) { return isOutside(uvec2(position + 128), 256 * size); }

ivec4 texelAt(int x, int y) { return bytesOf(texelFetch(source, ivec2(x, y), 0)); }

ivec4 mixedAt(ivec2 position, ivec2 size) {
  const ivec2 first = max(position >> 8, ivec2(0));
  const ivec2 second = min((position >> 8) + 1, size - 1);
  const ivec2 weight = position & 255;
  const ivec4 above = texelAt(first.x, first.y) * (256 - weight.x) + texelAt(second.x, first.y) * weight.x;
  const ivec4 below = texelAt(first.x, second.y) * (256 - weight.x) + texelAt(second.x, second.y) * weight.x;
  return (above * (256 - weight.y) + below * weight.y + 32768) >> 16;
}
