#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <variant>

#include "platform/gpu/native/native_kernel.h"

namespace velicor::gpu {

// One function in every form that a device may ask for. A form that is missing makes the pipeline creation
// fail on the devices that need it.
struct KernelForms {
  // What the native device calls.
  std::variant<std::monostate, NativeComputeFunction, NativeRowsFunction, NativeVertexFunction,
               NativeFragmentFunction>
      native;
  // A SPIR-V module with the entry point "main"; static data.
  std::span<const std::uint32_t> spirv;
};

// Functions by name, as the part of the program that owns them hands them to a device.
using KernelBundle = std::map<std::string, KernelForms, std::less<>>;

}  // namespace velicor::gpu
