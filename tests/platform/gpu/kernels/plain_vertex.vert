#version 450
layout(std430, binding = 24) readonly buffer Vertices { vec4 vertices[]; };
layout(location = 0) out vec2 coordinates;

void main() {
  const vec4 vertex = vertices[gl_VertexIndex];
  gl_Position = vec4(vertex.xy, 0, 1);
  coordinates = vertex.zw;
}
