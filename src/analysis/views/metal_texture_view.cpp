#include "analysis/views/metal_texture_view.h"

#include <utility>

#include "analysis/kernels/default_library.h"
#include "diagnostics/debug_dump.h"

namespace velicor {

namespace {

std::shared_ptr<gpu::RenderPipeline> makeBlitPipeline(const std::shared_ptr<gpu::Device>& device,
                                                      MetalTextureView::Reduction reduction) {
  const std::shared_ptr<gpu::Library> library = defaultLibrary(device);
  if (!library) return nullptr;
  const auto vertex = library->function("blitVertex");
  const auto fragment =
      library->function(reduction == MetalTextureView::Reduction::blend ? "blitFragment" : "blitScope");
  if (!vertex || !fragment) return nullptr;
  return device->makeRenderPipeline({vertex, fragment, gpu::PixelFormat::bgra8Unorm});
}

class CoordinatedView : public LiveTextureView {
 public:
  CoordinatedView(std::shared_ptr<gpu::Device> device, notifications::Name signal,
                  std::shared_ptr<MetalTextureView::Renderer> coordinator)
      : LiveTextureView(std::move(device), signal), coordinator_(std::move(coordinator)) {
    setDelegate(coordinator_);
  }

 private:
  const std::shared_ptr<MetalTextureView::Renderer> coordinator_;
};

}  // namespace

std::array<float, 2> aspectFitScale(float dw, float dh, float tw, float th) {
  if (!(dw > 0 && dh > 0 && tw >= 1 && th > 0)) return {1, 1};
  const float view = dw / dh;
  const float texture = tw / th;
  if (view >= texture) return {texture / view, 1};
  return {1, view / texture};
}

MetalTextureView::Renderer::Renderer(const std::shared_ptr<gpu::Device>& device, TextureProvider provider,
                                     Reduction reduction)
    : provider_(std::move(provider)),
      queue_(device->makeCommandQueue()),
      pso_(makeBlitPipeline(device, reduction)) {}

void MetalTextureView::Renderer::draw(LiveTextureView& view) {
  DebugDump::tick("drawn");
  if (!queue_) return;
  const std::optional<gpu::RenderTarget> target = view.currentRenderTarget();
  if (!target) return;
  const std::shared_ptr<gpu::CommandBuffer> commandBuffer = queue_->makeCommandBuffer();
  if (!commandBuffer) return;
  const std::shared_ptr<gpu::RenderEncoder> encoder = commandBuffer->makeRenderEncoder(*target);
  if (!encoder) return;
  encode(*encoder, target->texture->size());
  encoder->endEncoding();
  view.present(*commandBuffer);
  commandBuffer->commit();
}

void MetalTextureView::Renderer::encode(gpu::RenderEncoder& encoder, gpu::Extent drawable) const {
  const std::shared_ptr<gpu::Texture> texture = provider_ ? provider_() : nullptr;
  if (!texture || !pso_) return;
  const std::array<float, 2> scale =
      aspectFitScale(static_cast<float>(drawable.width), static_cast<float>(drawable.height),
                     static_cast<float>(texture->width()), static_cast<float>(texture->height()));
  encoder.setPipeline(pso_);
  encoder.setVertexBytes(std::as_bytes(std::span(scale)), 0);
  encoder.setFragmentTexture(texture, 0);
  encoder.drawTriangles(0, 3);
}

std::shared_ptr<MetalTextureView::Renderer> MetalTextureView::makeCoordinator() const {
  return std::make_shared<Renderer>(device, textureProvider, Reduction::brightest);
}

std::unique_ptr<LiveTextureView> MetalTextureView::makeView(std::shared_ptr<Renderer> coordinator) const {
  return std::make_unique<CoordinatedView>(device, signal, std::move(coordinator));
}

}  // namespace velicor
