#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace velicor::gpu::vulkan {

// What the device has to know of a SPIR-V module, read from the module itself.
struct ShaderFacts {
  enum class Stage { vertex, fragment, compute };
  Stage stage = Stage::compute;
  std::vector<std::uint32_t> bindings;  // ascending; see shader_interface.h
};

// None where this is no module, or one with bindings outside the convention.
std::optional<ShaderFacts> factsOf(std::span<const std::uint32_t> spirv);

}  // namespace velicor::gpu::vulkan
