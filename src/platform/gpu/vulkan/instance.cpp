#include "platform/gpu/vulkan/instance.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "platform/gpu/vulkan/loader.h"

namespace velicor::gpu::vulkan {

namespace {

constexpr const char* validationLayer = "VK_LAYER_KHRONOS_validation";

VKAPI_ATTR VkBool32 VKAPI_CALL complain(VkDebugUtilsMessageSeverityFlagBitsEXT,
                                        VkDebugUtilsMessageTypeFlagsEXT,
                                        const VkDebugUtilsMessengerCallbackDataEXT* data, void* receiver) {
  // Validation layers from 1.4 on leave the name out of the message.
  const std::string name = data->pMessageIdName ? data->pMessageIdName : "";
  (*static_cast<const std::function<void(std::string_view)>*>(receiver))(name + ": " + data->pMessage);
  return VK_FALSE;
}

// Made from the structure of Vulkan's C header: the type of the callback in the C++ header differs between 1.3 and 1.4.
vk::DebugUtilsMessengerCreateInfoEXT messengerInfo(const std::function<void(std::string_view)>& onComplaint) {
  VkDebugUtilsMessengerCreateInfoEXT info{};
  info.sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_MESSENGER_CREATE_INFO_EXT;
  info.messageSeverity =
      VK_DEBUG_UTILS_MESSAGE_SEVERITY_WARNING_BIT_EXT | VK_DEBUG_UTILS_MESSAGE_SEVERITY_ERROR_BIT_EXT;
  info.messageType = VK_DEBUG_UTILS_MESSAGE_TYPE_VALIDATION_BIT_EXT;
  info.pfnUserCallback = complain;
  info.pUserData = const_cast<std::function<void(std::string_view)>*>(&onComplaint);
  return info;
}

bool offersNames(const vk::raii::Context& context) {
  const auto extensions = context.enumerateInstanceExtensionProperties();
  return std::any_of(extensions.begin(), extensions.end(), [](const auto& extension) {
    return std::strcmp(extension.extensionName, VK_EXT_DEBUG_UTILS_EXTENSION_NAME) == 0;
  });
}

vk::raii::Instance makeInstance(const vk::raii::Context& context, bool names,
                                const std::function<void(std::string_view)>& onComplaint) {
  const vk::ApplicationInfo application("Velicor", 1, nullptr, 0, VK_API_VERSION_1_2);
  std::vector<const char*> layers;
  std::vector<const char*> extensions;
  if (names) extensions.push_back(VK_EXT_DEBUG_UTILS_EXTENSION_NAME);
  if (!onComplaint) return {context, vk::InstanceCreateInfo({}, &application, layers, extensions)};

  layers.push_back(validationLayer);
  extensions.push_back(VK_EXT_VALIDATION_FEATURES_EXTENSION_NAME);
  constexpr std::array enabled{vk::ValidationFeatureEnableEXT::eSynchronizationValidation};
  const vk::StructureChain chain(vk::InstanceCreateInfo({}, &application, layers, extensions),
                                 vk::ValidationFeaturesEXT(enabled), messengerInfo(onComplaint));
  return {context, chain.get()};
}

std::optional<std::uint32_t> queueFamilyOf(const vk::raii::PhysicalDevice& device) {
  constexpr auto needed = vk::QueueFlagBits::eGraphics | vk::QueueFlagBits::eCompute;
  const auto families = device.getQueueFamilyProperties();
  const auto found = std::find_if(families.begin(), families.end(),
                                  [=](const auto& family) { return (family.queueFlags & needed) == needed; });
  if (found == families.end()) return std::nullopt;
  return static_cast<std::uint32_t>(found - families.begin());
}

Traits traitsOf(const vk::raii::PhysicalDevice& device) {
  const vk::PhysicalDeviceProperties properties = device.getProperties();
  const vk::PhysicalDeviceLimits& limits = properties.limits;
  const auto square = [](std::uint32_t side) { return std::uint64_t{side} * side; };
  const auto threads = static_cast<std::uint32_t>(
      std::min({std::uint64_t{limits.maxComputeWorkGroupInvocations},
                square(limits.maxComputeWorkGroupSize[0]), square(limits.maxComputeWorkGroupSize[1])}));
  return {static_cast<VkPhysicalDeviceType>(properties.deviceType), properties.apiVersion,
          queueFamilyOf(device), threads,
          std::min(limits.maxImageDimension2D,
                   std::min(limits.maxFramebufferWidth, limits.maxFramebufferHeight))};
}

}  // namespace

std::shared_ptr<const Instance> Instance::make(const VulkanOptions& options) {
  const VulkanEntryPoint entryPoint = options.entryPoint ? options.entryPoint : systemEntryPoint();
  // Loaders of the first version lack the second function.
  if (!entryPoint || !entryPoint(nullptr, "vkEnumerateInstanceVersion")) return nullptr;
  return std::make_shared<const Instance>(entryPoint, options);
}

Instance::Instance(VulkanEntryPoint entryPoint, const VulkanOptions& options)
    : context_(entryPoint),
      onComplaint_(options.onComplaint),
      namesObjects_(offersNames(context_)),
      instance_(makeInstance(context_, namesObjects_, onComplaint_)) {
  if (onComplaint_) messenger_.emplace(instance_, messengerInfo(onComplaint_));
}

std::vector<Instance::Candidate> Instance::candidates(bool softwareToo) const {
  std::vector<Candidate> found;
  for (vk::raii::PhysicalDevice& device : vk::raii::PhysicalDevices(instance_)) {
    const Traits traits = traitsOf(device);
    if (const auto rank = rankOf(traits, softwareToo))
      found.push_back({std::move(device), *traits.queueFamily, *rank});
  }
  std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.rank < b.rank; });
  return found;
}

}  // namespace velicor::gpu::vulkan
