#include <algorithm>
#include <cmath>

#include "analysis/kernels/kernel_interface.h"
#include "analysis/metal_processor.h"

// The passes of one analysis, as MetalProcessor records them.
namespace velicor {

namespace {

constexpr int ceilDivide(int value, int unit) { return (value + unit - 1) / unit; }

// Whole threadgroups that cover the extent; kernels leave out the threads outside it.
void dispatchOver(gpu::ComputeEncoder& encoder, gpu::Extent extent) {
  constexpr int side = kernels::threadgroupSide;
  encoder.dispatchThreadgroups({ceilDivide(extent.width, side), ceilDivide(extent.height, side), 1},
                               {side, side, 1});
}

// The brightness of a bin is min(1, log2(1 + count) × gain): full at 0.2 % of the samples, at least 15.
float vectorscopeGain(int samples) {
  return 1.0F / std::max(std::log2(1.0F + static_cast<float>(samples) * 0.002F), 4.0F);
}

// Full at a quarter of the samples of one of the 256 columns, at least 7.
float paradeGain(int samples) {
  return 1.0F / std::max(std::log2(1.0F + static_cast<float>(samples) / 1024.0F), 3.0F);
}

}  // namespace

void MetalProcessor::encodeUpload(gpu::CommandBuffer& commands, const std::shared_ptr<gpu::Texture>& frame) {
  const auto blit = commands.makeBlitEncoder();
  if (!blit) return;
  blit->copy({.source = frame,
              .sourceOrigin = {},
              .size = frame->size(),
              .destination = regionTexture_,
              .destinationOrigin = {}});
  blit->endEncoding();
}

void MetalProcessor::encodePreview(gpu::CommandBuffer& commands, Mode previewMode) {
  const auto encoder = commands.makeComputeEncoder();
  if (!encoder) return;
  encoder->setPipeline(pipelines_.falseColor);
  encoder->setTexture(regionTexture_, 0);
  encoder->setTexture(outTexture_, 1);
  encoder->setValue(static_cast<std::uint32_t>(id(previewMode)), 0);
  encoder->setValue(kernels::Offset{}, 1);
  encoder->setValue(palette_, 2);
  dispatchOver(*encoder, regionTexture_->size());
  encoder->endEncoding();
}

void MetalProcessor::encodeScopes(gpu::CommandBuffer& commands) {
  if (const auto blit = commands.makeBlitEncoder()) {
    blit->fill({.buffer = vsBuffer_, .offset = 0, .length = vsBuffer_->length(), .value = 0});
    blit->fill({.buffer = paradeBuffer_, .offset = 0, .length = paradeBuffer_->length(), .value = 0});
    blit->endEncoding();
  }
  const int stride = sampleStride(regionTexture_->width(), regionTexture_->height());
  const gpu::Extent samples{ceilDivide(regionTexture_->width(), stride),
                            ceilDivide(regionTexture_->height(), stride)};
  encodeAccumulation(commands, stride, samples);
  const int count = samples.width * samples.height;
  encodeScopeImage(commands, pipelines_.vsRender, vsBuffer_, vectorscopeGain(count), vsTexture_);
  encodeScopeImage(commands, pipelines_.paradeRender, paradeBuffer_, paradeGain(count), paradeTexture_);
}

void MetalProcessor::encodeAccumulation(gpu::CommandBuffer& commands, int stride, gpu::Extent samples) {
  const auto encoder = commands.makeComputeEncoder();
  if (!encoder) return;
  encoder->setPipeline(pipelines_.accumulate);
  encoder->setTexture(regionTexture_, 0);
  encoder->setBuffer(vsBuffer_, 0, 0);
  encoder->setBuffer(paradeBuffer_, 0, 1);
  encoder->setValue(kernels::Rectangle{.width = static_cast<std::uint32_t>(regionTexture_->width()),
                                       .height = static_cast<std::uint32_t>(regionTexture_->height())},
                    2);
  encoder->setValue(static_cast<std::uint32_t>(stride), 3);
  dispatchOver(*encoder, samples);
  encoder->endEncoding();
}

void MetalProcessor::encodeScopeImage(gpu::CommandBuffer& commands,
                                      const std::shared_ptr<gpu::ComputePipeline>& pipeline,
                                      const std::shared_ptr<gpu::Buffer>& counters, float gain,
                                      const std::shared_ptr<gpu::Texture>& image) {
  const auto encoder = commands.makeComputeEncoder();
  if (!encoder) return;
  encoder->setPipeline(pipeline);
  encoder->setBuffer(counters, 0, 0);
  encoder->setValue(gain, 1);
  encoder->setTexture(image, 0);
  dispatchOver(*encoder, image->size());
  encoder->endEncoding();
}

}  // namespace velicor
