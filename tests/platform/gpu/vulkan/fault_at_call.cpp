#include "platform/gpu/vulkan/fault_at_call.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <stdexcept>

#include "platform/gpu/vulkan/loader.h"

namespace velicor::gpu::test {

namespace {

// Never destroyed: a device's last thread may end with the process.
struct State {
  std::mutex mutex;
  std::size_t failing = 0;
  std::size_t error = 0;
  std::vector<std::string> calls;
};
State& state() {
  static State& instance = *new State;
  return instance;
}

// What this call gives instead of doing its work.
std::optional<VkResult> failureOf(const char* function) {
  const std::scoped_lock guard(state().mutex);
  state().calls.emplace_back(function);
  if (state().calls.size() != state().failing) return std::nullopt;
  const auto& errors = FaultAtCall::errorsOf(function);
  return errors[state().error % errors.size()];
}

template <std::size_t length>
struct Name {
  constexpr Name(const char (&literal)[length]) { std::copy_n(literal, length, text); }
  char text[length];
};

template <Name name, typename Function>
struct Replacement;

template <Name name, typename... Arguments>
struct Replacement<name, VkResult(VKAPI_PTR*)(Arguments...)> {
  static inline VkResult(VKAPI_PTR* real)(Arguments...) = nullptr;

  static VKAPI_ATTR VkResult VKAPI_CALL call(Arguments... arguments) {
    const auto failure = failureOf(name.text);
    if (!failure) return real(arguments...);
    // What is under way on a device that is lost must have ended before its memory may go, however long it takes.
    if (*failure == VK_ERROR_DEVICE_LOST && std::strcmp(name.text, "vkWaitForFences") == 0) {
      while (real(arguments...) == VK_TIMEOUT) {
      }
    }
    return *failure;
  }

  static PFN_vkVoidFunction install(PFN_vkVoidFunction function) {
    real = reinterpret_cast<VkResult(VKAPI_PTR*)(Arguments...)>(function);
    return reinterpret_cast<PFN_vkVoidFunction>(&call);
  }
};

struct Fallible {
  const char* name;
  PFN_vkVoidFunction (*install)(PFN_vkVoidFunction function);
  std::vector<VkResult> errors;
};

constexpr VkResult host = VK_ERROR_OUT_OF_HOST_MEMORY, onDevice = VK_ERROR_OUT_OF_DEVICE_MEMORY,
                   lost = VK_ERROR_DEVICE_LOST, notStarted = VK_ERROR_INITIALIZATION_FAILED;

template <Name name, typename Function>
Fallible fallible(std::vector<VkResult> errors = {host, onDevice}) {
  static constexpr Name kept = name;
  return {kept.text, &Replacement<name, Function>::install, std::move(errors)};
}

#define VELICOR_FALLIBLE(function) fallible<#function, PFN_##function>

// Every function that Velicor calls and that can fail, with the errors that Vulkan allows it.
const std::vector<Fallible>& fallibles() {
  static const std::vector<Fallible>& all = *new std::vector<Fallible>{
      VELICOR_FALLIBLE(vkCreateInstance)({host, onDevice, notStarted, VK_ERROR_LAYER_NOT_PRESENT,
                                          VK_ERROR_EXTENSION_NOT_PRESENT, VK_ERROR_INCOMPATIBLE_DRIVER}),
      VELICOR_FALLIBLE(vkEnumerateInstanceExtensionProperties)(),
      VELICOR_FALLIBLE(vkEnumeratePhysicalDevices)({host, onDevice, notStarted}),
      VELICOR_FALLIBLE(vkEnumerateDeviceExtensionProperties)(),
      VELICOR_FALLIBLE(vkCreateDevice)({host, onDevice, notStarted, VK_ERROR_EXTENSION_NOT_PRESENT,
                                        VK_ERROR_FEATURE_NOT_PRESENT, VK_ERROR_TOO_MANY_OBJECTS, lost}),
      VELICOR_FALLIBLE(vkCreateDebugUtilsMessengerEXT)({host}),
      VELICOR_FALLIBLE(vkSetDebugUtilsObjectNameEXT)(),
      VELICOR_FALLIBLE(vkGetMemoryHostPointerPropertiesEXT)({host, VK_ERROR_INVALID_EXTERNAL_HANDLE}),
      VELICOR_FALLIBLE(vkAllocateMemory)({host, onDevice, VK_ERROR_TOO_MANY_OBJECTS}),
      VELICOR_FALLIBLE(vkMapMemory)({host, onDevice, VK_ERROR_MEMORY_MAP_FAILED}),
      VELICOR_FALLIBLE(vkBindBufferMemory)(),
      VELICOR_FALLIBLE(vkBindImageMemory)(),
      VELICOR_FALLIBLE(vkCreateBuffer)(),
      VELICOR_FALLIBLE(vkCreateImage)(),
      VELICOR_FALLIBLE(vkCreateImageView)(),
      VELICOR_FALLIBLE(vkCreateFramebuffer)(),
      VELICOR_FALLIBLE(vkCreateSampler)(),
      VELICOR_FALLIBLE(vkCreateDescriptorSetLayout)(),
      VELICOR_FALLIBLE(vkCreatePipelineLayout)(),
      VELICOR_FALLIBLE(vkCreateRenderPass)(),
      VELICOR_FALLIBLE(vkCreateShaderModule)(),
      VELICOR_FALLIBLE(vkCreateComputePipelines)(),
      VELICOR_FALLIBLE(vkCreateGraphicsPipelines)(),
      VELICOR_FALLIBLE(vkCreateDescriptorPool)(),
      VELICOR_FALLIBLE(vkAllocateDescriptorSets)(
          {host, onDevice, VK_ERROR_FRAGMENTED_POOL, VK_ERROR_OUT_OF_POOL_MEMORY}),
      VELICOR_FALLIBLE(vkCreateQueryPool)(),
      VELICOR_FALLIBLE(vkGetQueryPoolResults)({host, onDevice, lost}),
      VELICOR_FALLIBLE(vkCreateCommandPool)(),
      VELICOR_FALLIBLE(vkResetCommandPool)(),
      VELICOR_FALLIBLE(vkAllocateCommandBuffers)(),
      VELICOR_FALLIBLE(vkBeginCommandBuffer)(),
      VELICOR_FALLIBLE(vkEndCommandBuffer)(),
      VELICOR_FALLIBLE(vkCreateFence)(),
      VELICOR_FALLIBLE(vkResetFences)({onDevice}),
      VELICOR_FALLIBLE(vkWaitForFences)({host, onDevice, lost}),
      VELICOR_FALLIBLE(vkQueueSubmit)({host, onDevice, lost}),
  };
  return all;
}

#undef VELICOR_FALLIBLE

PFN_vkGetDeviceProcAddr realDeviceFunction = nullptr;

PFN_vkVoidFunction deviceFunction(VkDevice device, const char* name);

PFN_vkVoidFunction replaced(const char* name, PFN_vkVoidFunction function) {
  if (!function) return nullptr;
  if (std::strcmp(name, "vkGetDeviceProcAddr") == 0) {
    realDeviceFunction = reinterpret_cast<PFN_vkGetDeviceProcAddr>(function);
    return reinterpret_cast<PFN_vkVoidFunction>(&deviceFunction);
  }
  for (const Fallible& each : fallibles())
    if (std::strcmp(name, each.name) == 0) return each.install(function);
  return function;
}

PFN_vkVoidFunction deviceFunction(VkDevice device, const char* name) {
  return replaced(name, realDeviceFunction(device, name));
}

PFN_vkVoidFunction instanceFunction(VkInstance instance, const char* name) {
  return replaced(name, vulkan::systemEntryPoint()(instance, name));
}

}  // namespace

FaultAtCall::FaultAtCall(std::size_t call, std::size_t error) {
  const std::scoped_lock guard(state().mutex);
  state().failing = call;
  state().error = error;
  state().calls.clear();
}

VulkanEntryPoint FaultAtCall::entryPoint() { return &instanceFunction; }

std::vector<std::string> FaultAtCall::calls() {
  const std::scoped_lock guard(state().mutex);
  return state().calls;
}

const std::vector<VkResult>& FaultAtCall::errorsOf(std::string_view function) {
  for (const Fallible& each : fallibles())
    if (each.name == function) return each.errors;
  throw std::out_of_range(std::string(function));
}

}  // namespace velicor::gpu::test
