#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <variant>
#include <vector>

#include "platform/base/callable.h"
#include "platform/base/recycling.h"
#include "platform/gpu/library.h"
#include "platform/gpu/resources.h"
#include "platform/gpu/types.h"

// What a command buffer records, and what a device gets to execute: plain data, checked when it was recorded.
// Everything named is held until the device has let go of the list.
namespace velicor::gpu {

class CommandBuffer;
class Drawable;

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

// Bytes that the recording keeps.
struct InlineBytes {
  std::size_t offset = 0;
  std::size_t length = 0;
};

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

// Clears the target, then draws what the recording has of it.
struct RenderPass {
  std::shared_ptr<Texture> target;
  ClearColor clearColor;
  std::size_t firstDraw = 0;
  std::size_t drawCount = 0;
};

using Pass = std::variant<TextureCopy, BufferFill, BufferCopy, Dispatch, RenderPass>;

using CompletedHandler = Callable<void(const CommandBuffer&), 80>;

// All that a command buffer was told. Recordings are used again with the memory that their lists have.
struct Recording {
  Recording();

  std::vector<Pass> passes;
  std::vector<Draw> draws;

  // Drawables whose finished picture is wanted: the rows of their targets must be readable when the
  // submission finishes.
  std::vector<std::shared_ptr<Drawable>> presented;

  std::vector<CompletedHandler> handlers;

  InlineBytes keep(std::span<const std::byte> bytes);
  std::span<const std::byte> bytesOf(const InlineBytes& kept) const;
  std::span<const Draw> drawsOf(const RenderPass& pass) const;

  // Lets go of the resources.
  void clearPasses();
  void clear();

 private:
  std::vector<std::byte> bytes_;
};

// One committed command buffer on its way through a device.
struct Submission {
  // To be called once, on a device thread, in commit order: whether everything was executed.
  void finish(bool succeeded) const;

  Stock<Recording>::Loan recording;
  std::shared_ptr<CommandBuffer> commandBuffer;
};

}  // namespace velicor::gpu
