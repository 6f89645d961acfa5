#pragma once

#include <memory>

#include "platform/gpu/device.h"

namespace velicor {

// The program's own kernels, made for this device:
//
//   falseColor         texture 0 source, 1 preview (same size); buffer 0 mode (1 skin, 2 exposure),
//                      1 offset of the analysed area, 2 the palette's 11 colours
//   accumulateScopes   texture 0 source; buffer 0 vectorscope counters, 1 parade counters (both zeroed),
//                      2 analysed rectangle, 3 sampling stride; one thread a sample
//   renderVectorscope  buffer 0 counters, 1 gain; texture 0 image
//   renderParade       buffer 0 counters, 1 gain; texture 0 image
//   blitVertex         buffer 0 scale; three vertices
//   blitFragment       texture 0; bilinear by its own texel fetches (places between texels rounded to 1/256,
//                      edges held), so that a texture shown at its own size arrives bit for bit. Alpha is the
//                      texture's. Pixels outside the scaled rectangle keep what they had.
//   blitScope          the same for a scope's picture: made smaller, a pixel shows the highest value of each
//                      channel among all texels that it covers, so that no trace is lost; nothing is darker
//                      than the scopes' ground
//
// Layouts are in kernel_interface.h. Every function is there twice, in C++ and in GLSL (glsl/); what both
// must agree on they read from the same files (shared/).
std::shared_ptr<gpu::Library> defaultLibrary(const std::shared_ptr<gpu::Device>& device);

}  // namespace velicor
