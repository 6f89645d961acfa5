#pragma once

#include <memory>
#include <utility>

#include "platform/gpu/library.h"
#include "platform/gpu/native/native_kernel.h"

namespace velicor::gpu {

struct NativeComputePipeline : ComputePipeline {
  NativeComputePipeline(std::shared_ptr<Device> device, NativeComputeFunction compute, bool independentRows)
      : ComputePipeline(std::move(device)), function(compute), rowsAreIndependent(independentRows) {}
  const NativeComputeFunction function;
  const bool rowsAreIndependent;
};

struct NativeRenderPipeline : RenderPipeline {
  NativeRenderPipeline(std::shared_ptr<Device> device, PixelFormat colorFormat,
                       NativeVertexFunction vertexFunction, NativeFragmentFunction fragmentFunction)
      : RenderPipeline(std::move(device), colorFormat), vertex(vertexFunction), fragment(fragmentFunction) {}
  const NativeVertexFunction vertex;
  const NativeFragmentFunction fragment;
};

}  // namespace velicor::gpu
