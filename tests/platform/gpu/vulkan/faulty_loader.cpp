#include "platform/gpu/vulkan/faulty_loader.h"

#include <array>
#include <cstring>

#include <vulkan/vulkan_core.h>

#include "platform/gpu/vulkan/loader.h"

namespace velicor::gpu::test {

namespace {

FaultyLoader* present = nullptr;

// The functions behind, as they were last asked for.
struct {
  PFN_vkGetDeviceProcAddr getDeviceProcAddr;
  PFN_vkCreateDevice createDevice;
  PFN_vkEnumeratePhysicalDevices enumerate;
  PFN_vkGetPhysicalDeviceProperties properties;
  PFN_vkQueueSubmit submit;
  PFN_vkWaitForFences wait;
  PFN_vkAllocateMemory allocate;
  PFN_vkCreateCommandPool createCommandPool;
  PFN_vkCmdPipelineBarrier barrier;
} real;

bool take(std::atomic<int>& failures) {
  int left = failures;
  while (left > 0 && !failures.compare_exchange_weak(left, left - 1)) {
  }
  return left > 0;
}

VkResult createDevice(VkPhysicalDevice physical, const VkDeviceCreateInfo* info,
                      const VkAllocationCallbacks* allocator, VkDevice* device) {
  if (take(present->refusedDevices)) return VK_ERROR_FEATURE_NOT_PRESENT;
  return real.createDevice(physical, info, allocator, device);
}

VkResult enumerate(VkInstance instance, std::uint32_t* count, VkPhysicalDevice* devices) {
  if (!present->doubles) return real.enumerate(instance, count, devices);
  if (devices) *count /= 2;
  const VkResult result = real.enumerate(instance, count, devices);
  if (devices) std::memcpy(devices + *count, devices, *count * sizeof *devices);
  *count *= 2;
  return result;
}

void properties(VkPhysicalDevice physical, VkPhysicalDeviceProperties* result) {
  real.properties(physical, result);
  if (present->looksDiscrete) result->deviceType = VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU;
}

VkResult submit(VkQueue queue, std::uint32_t count, const VkSubmitInfo* submits, VkFence fence) {
  if (take(present->lostSubmits)) return VK_ERROR_DEVICE_LOST;
  return real.submit(queue, count, submits, fence);
}

VkResult wait(VkDevice device, std::uint32_t count, const VkFence* fences, VkBool32 all,
              std::uint64_t limit) {
  const VkResult result = real.wait(device, count, fences, all, limit);
  return take(present->lostWaits) ? VK_ERROR_DEVICE_LOST : result;
}

VkResult allocate(VkDevice device, const VkMemoryAllocateInfo* info, const VkAllocationCallbacks* allocator,
                  VkDeviceMemory* memory) {
  if (take(present->refusedAllocations)) return VK_ERROR_OUT_OF_DEVICE_MEMORY;
  ++present->allocations;
  const auto* next = static_cast<const VkBaseInStructure*>(info->pNext);
  if (next && next->sType == VK_STRUCTURE_TYPE_IMPORT_MEMORY_HOST_POINTER_INFO_EXT &&
      info->allocationSize > 4096)
    ++present->imports;
  return real.allocate(device, info, allocator, memory);
}

VkResult createCommandPool(VkDevice device, const VkCommandPoolCreateInfo* info,
                           const VkAllocationCallbacks* allocator, VkCommandPool* pool) {
  if (take(present->refusedCommandPools)) return VK_ERROR_OUT_OF_HOST_MEMORY;
  return real.createCommandPool(device, info, allocator, pool);
}

void barrier(VkCommandBuffer commands, VkPipelineStageFlags before, VkPipelineStageFlags after,
             VkDependencyFlags flags, std::uint32_t memoryCount, const VkMemoryBarrier* memory,
             std::uint32_t bufferCount, const VkBufferMemoryBarrier* buffers, std::uint32_t imageCount,
             const VkImageMemoryBarrier* images) {
  if (present->dropsBarriers) return;
  real.barrier(commands, before, after, flags, memoryCount, memory, bufferCount, buffers, imageCount, images);
}

PFN_vkVoidFunction deviceFunction(VkDevice device, const char* name);

// The replacement of a function, once the real one is noted; the real one where there is no replacement.
PFN_vkVoidFunction replaced(const char* name, PFN_vkVoidFunction function) {
  const auto replace = [&](const char* which, auto& note, auto replacement) -> PFN_vkVoidFunction {
    if (!function || std::strcmp(name, which) != 0) return nullptr;
    note = reinterpret_cast<std::remove_reference_t<decltype(note)>>(function);
    return reinterpret_cast<PFN_vkVoidFunction>(replacement);
  };
  for (const PFN_vkVoidFunction found :
       {replace("vkGetDeviceProcAddr", real.getDeviceProcAddr, &deviceFunction),
        replace("vkCreateDevice", real.createDevice, &createDevice),
        replace("vkEnumeratePhysicalDevices", real.enumerate, &enumerate),
        replace("vkGetPhysicalDeviceProperties", real.properties, &properties),
        replace("vkQueueSubmit", real.submit, &submit), replace("vkWaitForFences", real.wait, &wait),
        replace("vkAllocateMemory", real.allocate, &allocate),
        replace("vkCreateCommandPool", real.createCommandPool, &createCommandPool),
        replace("vkCmdPipelineBarrier", real.barrier, &barrier)}) {
    if (found) return found;
  }
  return function;
}

PFN_vkVoidFunction deviceFunction(VkDevice device, const char* name) {
  return replaced(name, real.getDeviceProcAddr(device, name));
}

PFN_vkVoidFunction instanceFunction(VkInstance instance, const char* name) {
  return replaced(name, vulkan::systemEntryPoint()(instance, name));
}

}  // namespace

FaultyLoader::FaultyLoader() { present = this; }
FaultyLoader::~FaultyLoader() { present = nullptr; }
VulkanEntryPoint FaultyLoader::entryPoint() const { return &instanceFunction; }

}  // namespace velicor::gpu::test
