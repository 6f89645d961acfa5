#version 450
layout(local_size_x = 16, local_size_y = 16, local_size_x_id = 0, local_size_y_id = 1) in;
layout(binding = 0) uniform sampler2D source;
layout(binding = 9, rgba8) uniform writeonly image2D result;
layout(std430, binding = 18) readonly buffer Added { vec4 added; };

void main() {
  const ivec2 at = ivec2(gl_GlobalInvocationID.xy);
  if (any(greaterThanEqual(at, imageSize(result)))) return;
  imageStore(result, at, texelFetch(source, at, 0) + added);
}
