#pragma once

#include "analysis/views/live_texture_view.h"

namespace velicor {

// A texture view that the mouse passes by: what lies around it in its window gets the events.
class PassthroughTextureView : public LiveTextureView {
 public:
  PassthroughTextureView(std::shared_ptr<gpu::Device> device, notifications::Name signal,
                         QWidget* parent = nullptr)
      : LiveTextureView(std::move(device), signal, parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
  }
};

}  // namespace velicor
