#version 450
#include "pictures.glsl"

layout(std430, binding = 24) restrict readonly buffer Scale { vec2 scale; };

layout(location = 0) noperspective out vec2 coordinate;

void main() {
  const vec2 corner =
      vec2(gl_VertexIndex == 1 ? blitFar : blitNear, gl_VertexIndex == 2 ? blitFar : blitNear);
  coordinate = vec2(corner.x + 1.0, 1.0 - corner.y) * 0.5;
  gl_Position = vec4(corner * scale, 0.0, 1.0);
}
