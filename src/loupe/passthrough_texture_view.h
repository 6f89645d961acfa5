#pragma once

#include "analysis/views/live_texture_view.h"

namespace velicor {

// A texture view for what is captured under its panel. What is captured of the screen lies where it is on the
// screen, also where the panel reaches beyond that; the rest stays empty. The mouse passes it by: what lies
// around it in its window gets the events.
class PassthroughTextureView : public LiveTextureView {
 public:
  PassthroughTextureView(std::shared_ptr<gpu::Device> device, notifications::Name signal,
                         QWidget* parent = nullptr);

 protected:
  QRect pictureRect() const override;
};

}  // namespace velicor
