#pragma once

#include <cstdint>

// What a GLSL function and the Vulkan device agree on. Everything is in descriptor set 0; which bindings a
// module uses is read from its SPIR-V, so that a shader declares just what it needs.
//
//   texture i, only read        binding i        sampler2D; nearest, edges held. texelFetch gives the texels
//   texture i, written          binding 8 + i    image2D, rgba8, compute only. Textures in RGBA order; those
//   in
//                                                BGRA order are read or rendered to, never stored to
//   buffer i or bytes i of a    binding 16 + i   std430 buffer
//   compute or fragment shader
//   bytes i of a vertex shader  binding 24 + i   readonly std430 buffer
//
// A compute shader declares
//   layout(local_size_x = 16, local_size_y = 16, local_size_x_id = 0, local_size_y_id = 1) in;
// and gets the threads per threadgroup of its dispatch in there.
//
// A vertex shader gives positions in −1…1 with y up, as on every device of this interface (the viewport is
// turned over for it), and z = 0. Vertices come in gl_VertexIndex. Nothing is culled or blended; a fragment
// that is discarded keeps what was there.
//
// Entry points are called "main"; modules are for Vulkan 1.2 (SPIR-V 1.5 at most).
namespace velicor::gpu::shader_interface {

inline constexpr std::uint32_t sampledTextures = 0;
inline constexpr std::uint32_t storedTextures = 8;
inline constexpr std::uint32_t buffers = 16;
inline constexpr std::uint32_t vertexBytes = 24;
inline constexpr std::uint32_t bindingsEnd = 32;

inline constexpr std::uint32_t threadsAlongX = 0;  // specialisation constants
inline constexpr std::uint32_t threadsAlongY = 1;

}  // namespace velicor::gpu::shader_interface
