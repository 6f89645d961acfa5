#pragma once

#include <array>
#include <functional>
#include <memory>

#include "analysis/views/live_texture_view.h"

namespace velicor {

// What (x, y) a picture's corners are scaled by, from a view's full extent, so that a texture of tw × th
// pixels fits a drawable of dw × dh with its proportions kept. (1, 1) where one of them is empty.
std::array<float, 2> aspectFitScale(float dw, float dh, float tw, float th);

// A scope's texture in a window: what draws it, on whose device, and when. A plain value, made into a widget
// once.
struct MetalTextureView {
  // Asked on the main thread at every draw; none draws the clear colour.
  using TextureProvider = std::function<std::shared_ptr<gpu::Texture>()>;

  // What a texture that is larger than its view is reduced to: a blend, or the brightest of all that a pixel
  // covers.
  enum class Reduction { blend, brightest };

  // Draws one texture, aspect-fitted, over near black. Keeps no frame: every draw asks the provider again.
  // A device or kernel library that lacks what it takes draws the clear colour, or nothing.
  class Renderer : public LiveTextureView::Delegate {
   public:
    Renderer(const std::shared_ptr<gpu::Device>& device, TextureProvider provider,
             Reduction reduction = Reduction::blend);
    void draw(LiveTextureView& view) override;

   private:
    void encode(gpu::RenderEncoder& encoder, gpu::Extent drawable) const;

    const TextureProvider provider_;
    const std::shared_ptr<gpu::CommandQueue> queue_;
    const std::shared_ptr<gpu::RenderPipeline> pso_;
  };

  std::shared_ptr<gpu::Device> device;
  notifications::Name signal;
  TextureProvider textureProvider;

  std::shared_ptr<Renderer> makeCoordinator() const;

  // The view keeps the coordinator.
  std::unique_ptr<LiveTextureView> makeView(std::shared_ptr<Renderer> coordinator) const;
};

}  // namespace velicor
