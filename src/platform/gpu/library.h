#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/gpu/kernel_bundle.h"
#include "platform/gpu/types.h"

namespace velicor::gpu {

class Device;

// One function of a library.
struct Function {
  std::string name;
  KernelForms forms;
  std::shared_ptr<Device> device;
};

// The functions that a device was given, by name.
class Library {
 public:
  Library(std::shared_ptr<Device> device, KernelBundle bundle);

  // nullptr where the library has no function of this name.
  std::shared_ptr<const Function> function(std::string_view name) const;

  const std::shared_ptr<Device>& device() const { return device_; }

 private:
  std::shared_ptr<Device> device_;
  KernelBundle bundle_;
};

// A function made ready to be dispatched. Immutable; any thread.
class ComputePipeline {
 public:
  virtual ~ComputePipeline() = default;
  ComputePipeline(const ComputePipeline&) = delete;
  ComputePipeline& operator=(const ComputePipeline&) = delete;
  const std::shared_ptr<Device>& device() const { return device_; }

 protected:
  explicit ComputePipeline(std::shared_ptr<Device> device) : device_(std::move(device)) {}

 private:
  std::shared_ptr<Device> device_;
};

struct RenderPipelineDescriptor {
  std::shared_ptr<const Function> vertexFunction;
  std::shared_ptr<const Function> fragmentFunction;
  PixelFormat colorFormat = PixelFormat::bgra8Unorm;
};

// A vertex and a fragment function made ready to draw triangles without blending. Immutable; any thread.
class RenderPipeline {
 public:
  virtual ~RenderPipeline() = default;
  RenderPipeline(const RenderPipeline&) = delete;
  RenderPipeline& operator=(const RenderPipeline&) = delete;
  const std::shared_ptr<Device>& device() const { return device_; }
  PixelFormat colorFormat() const { return colorFormat_; }

 protected:
  RenderPipeline(std::shared_ptr<Device> device, PixelFormat colorFormat)
      : device_(std::move(device)), colorFormat_(colorFormat) {}

 private:
  std::shared_ptr<Device> device_;
  PixelFormat colorFormat_;
};

}  // namespace velicor::gpu
