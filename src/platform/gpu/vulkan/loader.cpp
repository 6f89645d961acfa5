#include "platform/gpu/vulkan/loader.h"

#include <dlfcn.h>

namespace velicor::gpu::vulkan {

VulkanEntryPoint systemEntryPoint() {
  static void* const library = dlopen("libvulkan.so.1", RTLD_NOW | RTLD_LOCAL);
  if (!library) return nullptr;
  return reinterpret_cast<VulkanEntryPoint>(dlsym(library, "vkGetInstanceProcAddr"));
}

}  // namespace velicor::gpu::vulkan
