#version 450
layout(location = 0) in vec2 coordinates;
layout(location = 0) out vec4 color;

void main() { color = vec4(coordinates, 0, 1); }
