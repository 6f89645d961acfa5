#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <variant>
#include <vector>

#include "platform/gpu/library.h"
#include "platform/gpu/resources.h"
#include "platform/gpu/types.h"

// What a command buffer records, and what a device gets to execute: plain data, checked when it was recorded.
// Everything named is held until the device has let go of the list.
namespace velicor::gpu {

class DrawableTarget;

// Copies a region between two textures of one format.
struct TextureCopy {
  std::shared_ptr<Texture> source;
  Origin sourceOrigin;
  Extent size;
  std::shared_ptr<Texture> destination;
  Origin destinationOrigin;
};

struct BufferFill {
  std::shared_ptr<Buffer> buffer;
  std::size_t offset = 0;
  std::size_t length = 0;
  std::uint8_t value = 0;
};

struct BufferCopy {
  std::shared_ptr<Buffer> source;
  std::size_t sourceOffset = 0;
  std::shared_ptr<Buffer> destination;
  std::size_t destinationOffset = 0;
  std::size_t length = 0;
};

struct BufferSlice {
  std::shared_ptr<Buffer> buffer;
  std::size_t offset = 0;
};

using InlineBytes = std::vector<std::byte>;

struct Bindings {
  std::array<std::shared_ptr<Texture>, maxTextureBindings> textures;
  std::array<std::variant<std::monostate, BufferSlice, InlineBytes>, maxBufferBindings> buffers;
};

struct Dispatch {
  std::shared_ptr<ComputePipeline> pipeline;
  Bindings bindings;
  GridSize threadgroups;
  GridSize threadsPerThreadgroup;
};

// Three vertices a triangle.
struct Draw {
  std::shared_ptr<RenderPipeline> pipeline;
  Bindings vertex;
  Bindings fragment;
  int vertexStart = 0;
  int vertexCount = 0;
};

// Clears the target, then draws.
struct RenderPass {
  std::shared_ptr<Texture> target;
  ClearColor clearColor;
  std::vector<Draw> draws;
};

using Pass = std::variant<TextureCopy, BufferFill, BufferCopy, Dispatch, RenderPass>;

// One committed command buffer on its way through a device.
struct Submission {
  std::vector<Pass> passes;

  // Targets whose finished picture is wanted: their rows must be readable when `finished` is called.
  std::vector<std::shared_ptr<DrawableTarget>> presented;

  // Called once, on a device thread, in commit order: whether everything was executed.
  std::function<void(bool succeeded)> finished;
};

}  // namespace velicor::gpu
