#include "analysis/kernels/default_library.h"

#include "analysis/kernels/native_kernels.h"
#include "velicor_analysis_shaders.h"

namespace velicor {

std::shared_ptr<gpu::Library> defaultLibrary(const std::shared_ptr<gpu::Device>& device) {
  return device->makeLibrary({
      {"falseColor", {.native = gpu::NativeRowsFunction{kernels::falseColor}, .spirv = shaders::falseColor}},
      {"accumulateScopes", {.native = kernels::accumulateScopes, .spirv = shaders::accumulateScopes}},
      {"renderVectorscope", {.native = kernels::renderVectorscope, .spirv = shaders::renderVectorscope}},
      {"renderParade", {.native = kernels::renderParade, .spirv = shaders::renderParade}},
      {"blitVertex", {.native = kernels::blitVertex, .spirv = shaders::blitVertex}},
      {"blitFragment", {.native = kernels::blitFragment, .spirv = shaders::blitFragment}},
      {"blitScope", {.native = kernels::blitScope, .spirv = shaders::blitScope}},
  });
}

}  // namespace velicor
