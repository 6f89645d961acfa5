#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "platform/gpu/vulkan/backing.h"

namespace velicor::gpu::vulkan {

// What one submission needs on its way through the device: commands, arguments, a fence, a clock. Used again
// for a later submission once this one has been completed, and grown once, so that frames allocate nothing.
class Flight {
 public:
  // All but the last two: the thread that records. Throws vk::SystemError, as all of this.
  Flight(ContextRef context, bool measures);
  Flight(const Flight&) = delete;
  Flight& operator=(const Flight&) = delete;

  // Empty again and ready to record.
  void restart();

  const ContextRef& context() const { return context_; }
  const vk::raii::CommandBuffer& commands() const { return commands_; }

  // Bytes for a function to read, or for a copy.
  vk::DescriptorBufferInfo put(std::span<const std::byte> bytes);

  // A set that no earlier command of this flight uses, to be written at these bindings (one bit each): all
  // that was ever written to it. Some drivers also look at what a function does not use, and there must be
  // nothing then that is gone.
  vk::DescriptorSet nextSet(std::uint32_t bindings);

  // The commands since the last call, or the beginning, are the pass of this name.
  void endPass(std::string_view name);

  void submit();

  // Returns when the submission is done.
  void await() const;

  // After await(): empty unless measured.
  std::vector<PassTime> passTimes() const;

 private:
  struct ArgumentSet {
    vk::raii::DescriptorSet set;
    std::uint32_t bindings = 0;  // 0: never written
    bool used = false;           // since the last restart
  };

  ArgumentSet* unusedSet(std::uint32_t bindings);
  void addSets();
  void writeTimestamp();

  ContextRef context_;
  vk::raii::CommandPool commandPool_;
  vk::raii::CommandBuffer commands_;
  vk::raii::Fence done_;

  std::vector<std::unique_ptr<BufferBacking>> arguments_;
  std::size_t argumentBuffer_ = 0;
  std::size_t argumentBytes_ = 0;

  std::vector<vk::raii::DescriptorPool> setPools_;
  std::vector<ArgumentSet> sets_;

  vk::raii::QueryPool clock_{nullptr};
  bool measures_;
  std::uint32_t timestamps_ = 0;
  std::vector<std::string> passes_;
};

}  // namespace velicor::gpu::vulkan
