#version 450
layout(local_size_x = 16, local_size_y = 16, local_size_x_id = 0, local_size_y_id = 1) in;
layout(std430, binding = 16) buffer Number { uint number; };

void main() { ++number; }
