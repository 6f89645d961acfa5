#include "analysis/kernels/default_library.h"

#include "analysis/kernels/native_kernels.h"

namespace velicor {

std::shared_ptr<gpu::Library> defaultLibrary(const std::shared_ptr<gpu::Device>& device) {
  return device->makeLibrary({
      {"falseColor", {.native = kernels::falseColor, .spirv = {}}},
      {"accumulateScopes", {.native = kernels::accumulateScopes, .spirv = {}}},
      {"renderVectorscope", {.native = kernels::renderVectorscope, .spirv = {}}},
      {"renderParade", {.native = kernels::renderParade, .spirv = {}}},
      {"blitVertex", {.native = kernels::blitVertex, .spirv = {}}},
      {"blitFragment", {.native = kernels::blitFragment, .spirv = {}}},
  });
}

}  // namespace velicor
