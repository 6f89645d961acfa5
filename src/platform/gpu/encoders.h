#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <type_traits>

#include "platform/gpu/passes.h"

// Encoders record work into a command buffer, in the order of the calls. One encoder of a command buffer is
// open at a time; it is used by one thread at a time, and dropping it ends it. Wrong arguments (an index out
// of range, a region outside its texture, resources of another device, use after the end) end the process
// with a log line.
namespace velicor::gpu {

class CommandBuffer;

class Encoder {
 public:
  virtual ~Encoder();
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  void endEncoding();

 protected:
  explicit Encoder(std::shared_ptr<CommandBuffer> commandBuffer);
  const std::shared_ptr<Device>& device() const;
  void requireOpen() const;
  void record(Pass pass);
  Recording& recording() const;  // while open
  InlineBytes keep(std::span<const std::byte> bytes) const;
  virtual void onEnd() {}

 private:
  std::shared_ptr<CommandBuffer> commandBuffer_;  // none once ended
};

class BlitEncoder : public Encoder {
 public:
  explicit BlitEncoder(std::shared_ptr<CommandBuffer> commandBuffer) : Encoder(std::move(commandBuffer)) {}
  void copy(TextureCopy copy);
  void copy(BufferCopy copy);
  void fill(BufferFill fill);
};

class ComputeEncoder : public Encoder {
 public:
  explicit ComputeEncoder(std::shared_ptr<CommandBuffer> commandBuffer) : Encoder(std::move(commandBuffer)) {}
  void setPipeline(std::shared_ptr<ComputePipeline> pipeline);
  void setTexture(std::shared_ptr<Texture> texture, int index);
  void setBuffer(std::shared_ptr<Buffer> buffer, std::size_t offset, int index);
  void setBytes(std::span<const std::byte> bytes, int index);

  // A number, or a struct or array of numbers, as it lies in memory.
  template <typename T>
  void setValue(const T& value, int index) {
    static_assert(std::is_trivially_copyable_v<T>);
    setBytes(std::as_bytes(std::span<const T, 1>(&value, 1)), index);
  }

  // Two-dimensional grids only. Uses what is bound now; bindings stay for the next dispatch.
  void dispatchThreadgroups(GridSize threadgroups, GridSize threadsPerThreadgroup);

 private:
  std::shared_ptr<ComputePipeline> pipeline_;
  Bindings bindings_;
};

struct RenderTarget {
  std::shared_ptr<Texture> texture;  // usage renderTarget
  ClearColor clearColor;
};

// The target is cleared even where nothing is drawn.
class RenderEncoder : public Encoder {
 public:
  RenderEncoder(std::shared_ptr<CommandBuffer> commandBuffer, RenderTarget target);
  ~RenderEncoder() override;
  void setPipeline(std::shared_ptr<RenderPipeline> pipeline);
  void setVertexBytes(std::span<const std::byte> bytes, int index);
  void setFragmentTexture(std::shared_ptr<Texture> texture, int index);
  void drawTriangles(int vertexStart, int vertexCount);

 private:
  void onEnd() override;

  RenderPass pass_;
  std::shared_ptr<RenderPipeline> pipeline_;
  Bindings vertex_;
  Bindings fragment_;
};

}  // namespace velicor::gpu
