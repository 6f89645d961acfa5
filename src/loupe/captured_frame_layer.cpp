#include "loupe/captured_frame_layer.h"

#include <utility>

#include "analysis/notification_names.h"
#include "loupe/passthrough_texture_view.h"
#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/panel.h"

namespace velicor {

namespace {

// Where the captured pixels come from, seen from the panel's top-left corner: of the screen that shows most
// of the panel, what the panel covers.
QRect capturedPart(const desktop::Panel& panel) {
  const desktop::ScreenLayout& layout = panel.desktop().screens().layout();
  if (layout.count() == 0) return {};
  const DesktopRect covered = panel.frame().intersection(layout.frame(layout.monitorAt(panel.frame())));
  if (covered.isEmpty()) return {};
  const DeviceRect pixels = layout.toDevice(covered);
  const DeviceRect& window = panel.deviceFrame();
  return {pixels.x - window.x, pixels.y - window.y, pixels.width, pixels.height};
}

// The preview may fit a smaller captured frame into the whole loupe; this one has to lie where the desktop
// is.
class CapturedFrameView : public PassthroughTextureView {
 public:
  CapturedFrameView(std::shared_ptr<gpu::Device> device, notifications::Name signal, QWidget* parent)
      : PassthroughTextureView(std::move(device), signal, parent) {
    ignoreFourthByte();
  }

 protected:
  QRect pictureRect() const override {
    const desktop::Panel* panel = desktop::Panel::of(this);
    return panel ? capturedPart(*panel) : PassthroughTextureView::pictureRect();
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
