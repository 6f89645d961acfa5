#pragma once

#include <memory>

#include "analysis/metal_processor.h"
#include "analysis/views/metal_texture_view.h"

class QWidget;

namespace velicor {

// The captured frame painted where the desktop shines through when there is a compositing manager: pixel on
// pixel, over the part of the panel that lies on the captured screen. Exists only while there is none. Main
// thread.
class CapturedFrameLayer {
 public:
  // Over all of `container`, a panel's content, below everything else in it, and is gone before it.
  CapturedFrameLayer(const std::shared_ptr<MetalProcessor>& processor, QWidget& container);
  ~CapturedFrameLayer();
  CapturedFrameLayer(const CapturedFrameLayer&) = delete;
  CapturedFrameLayer& operator=(const CapturedFrameLayer&) = delete;

  LiveTextureView& view() const { return *view_; }

 private:
  const std::shared_ptr<MetalTextureView::Renderer> renderer_;
  const std::unique_ptr<LiveTextureView> view_;
};

}  // namespace velicor
