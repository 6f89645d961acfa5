#include "platform/gpu/drawables.h"

#include <utility>

#include "platform/base/recycling.h"
#include "platform/gpu/device.h"

namespace velicor::gpu {

// The two targets of a view and which of them are on loan. Outlives the view while a loan is open.
struct Drawables::Pool {
  struct Slot {
    std::shared_ptr<DrawableTarget> target;
    bool taken = false;
  };
  std::mutex mutex;
  std::array<Slot, 2> slots;
};

// A target that nobody else may draw into. Goes from the drawable to the picture that it becomes.
class Picture::Lease {
 public:
  Lease(std::shared_ptr<Drawables::Pool> pool, std::size_t slot)
      : pool_(std::move(pool)), slot_(slot), target_(pool_->slots[slot].target) {}
  ~Lease() {
    const std::scoped_lock guard(pool_->mutex);
    pool_->slots[slot_].taken = false;
  }
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;

  const std::shared_ptr<DrawableTarget>& target() const { return target_; }

 private:
  std::shared_ptr<Drawables::Pool> pool_;
  std::size_t slot_;
  std::shared_ptr<DrawableTarget> target_;
};

Picture::Picture(std::shared_ptr<Lease> lease) : lease_(std::move(lease)) {}
int Picture::width() const { return lease_->target()->texture()->width(); }
int Picture::height() const { return lease_->target()->texture()->height(); }
std::size_t Picture::bytesPerRow() const { return lease_->target()->bytesPerRow(); }
const std::byte* Picture::bytes() const { return lease_->target()->bytes(); }

Drawable::Drawable(std::shared_ptr<Drawables> owner, std::shared_ptr<Picture::Lease> lease)
    : owner_(std::move(owner)), lease_(std::move(lease)) {}

const std::shared_ptr<Texture>& Drawable::texture() const { return target()->texture(); }

const std::shared_ptr<DrawableTarget>& Drawable::target() const { return lease_->target(); }

void Drawable::publish() { owner_->publish(lease_); }

Drawables::Drawables(std::shared_ptr<Device> device)
    : device_(std::move(device)), pool_(std::make_shared<Pool>()) {}

std::shared_ptr<Drawable> Drawables::next(int width, int height) {
  if (width <= 0 || height <= 0 || width > maxTextureSide || height > maxTextureSide) return nullptr;
  std::shared_ptr<Picture::Lease> lease;
  {
    const std::scoped_lock guard(pool_->mutex);
    for (std::size_t i = 0; i < pool_->slots.size() && !lease; ++i) {
      auto& [target, taken] = pool_->slots[i];
      if (taken) continue;
      if (!target || target->texture()->size() != Extent{width, height}) {
        target = nullptr;  // the memory of the old size goes first
        target = device_->onMakeDrawableTarget(width, height);
      }
      if (!target) return nullptr;
      taken = true;
      lease = makeRecycled<Picture::Lease>(pool_, i);
    }
  }
  return lease ? makeRecycled<Drawable>(shared_from_this(), std::move(lease)) : nullptr;
}

std::shared_ptr<const Picture> Drawables::front() const {
  const std::scoped_lock guard(mutex_);
  return front_;
}

void Drawables::publish(const std::shared_ptr<Picture::Lease>& lease) {
  std::shared_ptr<const Picture> last = makeRecycled<Picture>(lease);
  const std::scoped_lock guard(mutex_);
  front_.swap(last);
}

}  // namespace velicor::gpu
