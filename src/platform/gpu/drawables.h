#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>

#include "platform/gpu/resources.h"
#include "platform/gpu/types.h"

// The pictures of a view, drawn by a device and painted by the toolkit:
//
//   auto drawable = drawables->next(width, height);              // main thread
//   … a render encoder with drawable->texture() as its target …
//   commandBuffer->present(drawable);
//   commandBuffer->addCompletedHandler(… ask for a repaint …);
//   commandBuffer->commit();
//   …
//   auto picture = drawables->front();                           // in the paint event: the newest finished
//   one
//
// A view has two targets. The one whose picture is newest, or is still held by somebody, is never drawn into.
namespace velicor::gpu {

class Device;
class Drawables;

// One target: a BGRA texture, usage renderTarget, and a way to read its rows once a command buffer that
// presented it has completed. On a device whose memory is the processor's own both are the same bytes.
class DrawableTarget {
 public:
  virtual ~DrawableTarget() = default;
  virtual const std::shared_ptr<Texture>& texture() const = 0;
  virtual const std::byte* bytes() const = 0;
  virtual std::size_t bytesPerRow() const = 0;
};

// A finished picture: rows of B, G, R, A bytes, row 0 at the top. Its bytes stay as they are for as long as
// somebody holds it, which keeps the view one target short: hold it while painting, no longer.
class Picture {
 public:
  class Lease;
  explicit Picture(std::shared_ptr<Lease> lease);
  int width() const;
  int height() const;
  std::size_t bytesPerRow() const;
  const std::byte* bytes() const;

 private:
  std::shared_ptr<Lease> lease_;
};

// A target on loan for one draw. Dropping it without presenting it gives the target back.
class Drawable {
 public:
  Drawable(std::shared_ptr<Drawables> owner, std::shared_ptr<Picture::Lease> lease);
  const std::shared_ptr<Texture>& texture() const;
  const std::shared_ptr<DrawableTarget>& target() const;

 private:
  friend class CommandBuffer;
  void publish();  // a device thread

  std::shared_ptr<Drawables> owner_;
  std::shared_ptr<Picture::Lease> lease_;
};

// Any thread.
class Drawables : public std::enable_shared_from_this<Drawables> {
 public:
  explicit Drawables(std::shared_ptr<Device> device);

  // A target of this size in device pixels. nullptr where the size is empty, where both targets are taken
  // (one is shown, the other still being drawn), or where the device has no memory for it.
  std::shared_ptr<Drawable> next(int width, int height);

  // The newest finished picture, whatever its size; nullptr before the first.
  std::shared_ptr<const Picture> front() const;

 private:
  friend class Drawable;
  friend class Picture::Lease;
  struct Pool;
  void publish(const std::shared_ptr<Picture::Lease>& lease);

  std::shared_ptr<Device> device_;
  std::shared_ptr<Pool> pool_;
  mutable std::mutex mutex_;
  std::shared_ptr<const Picture> front_;
};

}  // namespace velicor::gpu
