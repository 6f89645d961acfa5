#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/gpu/vulkan/ranking.h"
#include "platform/gpu/vulkan/vulkan_api.h"
#include "platform/gpu/vulkan/vulkan_device.h"

namespace velicor::gpu::vulkan {

// Vulkan itself, with the validation layer where that is asked for. Creation throws vk::SystemError.
class Instance {
 public:
  // nullptr where there is no loader.
  static std::shared_ptr<const Instance> make(const VulkanOptions& options);

  Instance(VulkanEntryPoint entryPoint, const VulkanOptions& options);
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;

  // Whether objects can be given names.
  bool namesObjects() const { return namesObjects_; }

  struct Candidate {
    vk::raii::PhysicalDevice device;
    std::uint32_t queueFamily;
    int rank;
  };

  // The devices that can carry the interface, best first.
  std::vector<Candidate> candidates(bool softwareToo) const;

 private:
  vk::raii::Context context_;
  std::function<void(std::string_view)> onComplaint_;
  bool namesObjects_;
  vk::raii::Instance instance_;
  std::optional<vk::raii::DebugUtilsMessengerEXT> messenger_;
};

}  // namespace velicor::gpu::vulkan
