#include "loupe/captured_frame_layer.h"

#include <utility>

#include "analysis/notification_names.h"
#include "loupe/passthrough_texture_view.h"

namespace velicor {

namespace {

class CapturedFrameView : public PassthroughTextureView {
 public:
  CapturedFrameView(std::shared_ptr<gpu::Device> device, notifications::Name signal, QWidget* parent)
      : PassthroughTextureView(std::move(device), signal, parent) {
    ignoreFourthByte();
  }
};

}  // namespace

CapturedFrameLayer::CapturedFrameLayer(const std::shared_ptr<MetalProcessor>& processor, QWidget& container)
    : renderer_(std::make_shared<MetalTextureView::Renderer>(processor->device(),
                                                             [processor] { return processor->frame(); })),
      view_(std::make_unique<CapturedFrameView>(processor->device(), velicorPreviewReady, &container)) {
  view_->setDelegate(renderer_);
  view_->setGeometry(container.rect());
  view_->lower();
  view_->show();
}

CapturedFrameLayer::~CapturedFrameLayer() = default;

}  // namespace velicor
