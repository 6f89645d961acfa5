#include "loupe/passthrough_texture_view.h"

#include <utility>

#include "platform/desktop/desktop.h"
#include "platform/desktop/monitor_screens.h"
#include "platform/desktop/panel.h"

namespace velicor {

PassthroughTextureView::PassthroughTextureView(std::shared_ptr<gpu::Device> device,
                                               notifications::Name signal, QWidget* parent)
    : LiveTextureView(std::move(device), signal, parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

// Of the screen that shows most of the panel, what the panel covers.
QRect PassthroughTextureView::pictureRect() const {
  const desktop::Panel* panel = desktop::Panel::of(this);
  if (!panel) return LiveTextureView::pictureRect();
  const desktop::ScreenLayout& layout = panel->desktop().screens().layout();
  if (layout.count() == 0) return {};
  const DesktopRect covered = panel->frame().intersection(layout.frame(layout.monitorAt(panel->frame())));
  if (covered.isEmpty()) return {};
  const DeviceRect pixels = layout.toDevice(covered);
  const DeviceRect& window = panel->deviceFrame();
  return {pixels.x - window.x, pixels.y - window.y, pixels.width, pixels.height};
}

}  // namespace velicor
