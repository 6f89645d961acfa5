#include "platform/gpu/vulkan/shader_facts.h"

#include <algorithm>

#include "platform/gpu/types.h"
#include "platform/gpu/vulkan/shader_interface.h"

namespace velicor::gpu::vulkan {

namespace {

// Numbers of the SPIR-V binary form.
constexpr std::uint32_t magic = 0x07230203;
constexpr std::size_t headerWords = 5;
constexpr std::uint32_t opEntryPoint = 15;
constexpr std::uint32_t opDecorate = 71;
constexpr std::uint32_t decorationBinding = 33;

std::optional<ShaderFacts::Stage> stageOf(std::uint32_t executionModel) {
  switch (executionModel) {
    case 0:
      return ShaderFacts::Stage::vertex;
    case 4:
      return ShaderFacts::Stage::fragment;
    case 5:
      return ShaderFacts::Stage::compute;
    default:
      return std::nullopt;
  }
}

bool isOurs(std::uint32_t binding) {
  using namespace shader_interface;
  const auto limit = static_cast<std::uint32_t>(binding < buffers ? maxTextureBindings : maxBufferBindings);
  return binding < bindingsEnd && binding % storedTextures < limit;
}

}  // namespace

std::optional<ShaderFacts> factsOf(std::span<const std::uint32_t> spirv) {
  if (spirv.size() < headerWords || spirv[0] != magic) return std::nullopt;
  ShaderFacts facts;
  std::optional<ShaderFacts::Stage> stage;
  for (std::size_t at = headerWords; at < spirv.size();) {
    const std::uint32_t operation = spirv[at] & 0xFFFF;
    const std::size_t words = spirv[at] >> 16;
    if (words == 0 || words > spirv.size() - at) return std::nullopt;
    if (operation == opEntryPoint && words > 2) stage = stageOf(spirv[at + 1]);
    if (operation == opDecorate && words > 3 && spirv[at + 2] == decorationBinding)
      facts.bindings.push_back(spirv[at + 3]);
    at += words;
  }
  if (!stage || !std::all_of(facts.bindings.begin(), facts.bindings.end(), isOurs)) return std::nullopt;
  facts.stage = *stage;
  std::sort(facts.bindings.begin(), facts.bindings.end());
  facts.bindings.erase(std::unique(facts.bindings.begin(), facts.bindings.end()), facts.bindings.end());
  return facts;
}

}  // namespace velicor::gpu::vulkan
