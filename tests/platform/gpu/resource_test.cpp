// What work does to buffers and textures, and what can't be made.
#include <array>

#include <gmock/gmock.h>

#include "platform/gpu/device_fixture.h"

namespace velicor::gpu::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using ResourceTest = DeviceTest;

TEST_P(ResourceTest, FillsAndCopiesRangesOfBuffers) {
  const auto hidden = device_->makeBuffer(8, StorageMode::deviceOnly);
  const auto shown = device_->makeBuffer(6, StorageMode::shared);
  const auto commands = queue_->makeCommandBuffer();
  const auto blit = commands->makeBlitEncoder();
  blit->fill({.buffer = hidden, .offset = 0, .length = 8, .value = 1});
  blit->fill({.buffer = hidden, .offset = 2, .length = 3, .value = 9});
  blit->fill({.buffer = shown, .offset = 0, .length = 6, .value = 0});
  blit->copy(
      {.source = hidden, .sourceOffset = 1, .destination = shown, .destinationOffset = 2, .length = 4});
  blit->endEncoding();
  commands->commit();
  commands->waitUntilCompleted();
  EXPECT_THAT(shown->contents(), ElementsAre(std::byte{0}, std::byte{0}, std::byte{1}, std::byte{9},
                                             std::byte{9}, std::byte{9}));
}

TEST_P(ResourceTest, CopiesARegionBetweenTextures) {
  const auto source = texture(3, 3);
  std::array<std::byte, 36> bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<std::byte>(i);
  source->replace({{0, 0}, {3, 3}}, bytes, 12);
  const auto destination = texture(2, 2);
  destination->replace({{0, 0}, {2, 2}}, std::array<std::byte, 16>{}, 8);
  const auto commands = queue_->makeCommandBuffer();
  const auto blit = commands->makeBlitEncoder();
  blit->copy({.source = source,
              .sourceOrigin = {1, 2},
              .size = {2, 1},
              .destination = destination,
              .destinationOrigin = {0, 1}});
  blit->endEncoding();
  commands->commit();
  EXPECT_THAT(pixelsOf(destination),
              ElementsAreArray({0, 0, 0, 0, 0, 0, 0, 0, 28, 29, 30, 31, 32, 33, 34, 35}));
}

TEST_P(ResourceTest, WrapsAPictureAndKeepsItUntilTheWrapperGoes) {
  const auto token = std::make_shared<int>();
  // Rows of two pixels, four bytes apart beyond them.
  std::array<std::byte, 24> memory;
  for (std::size_t i = 0; i < memory.size(); ++i)
    memory[i] = static_cast<std::byte>(i);
  auto picture = std::make_shared<PixelBuffer>(2, 2, 12, memory.data(), [token] {});
  const auto cache = device_->makeTextureCache();
  EXPECT_EQ(cache->texture(picture, PixelFormat::rgba8Unorm, 2, 2), nullptr);
  EXPECT_EQ(cache->texture(picture, PixelFormat::bgra8Unorm, 3, 2), nullptr);
  auto wrapped = cache->texture(picture, PixelFormat::bgra8Unorm, 2, 2);
  picture = nullptr;
  cache->flush();
  EXPECT_THAT(pixelsOf(wrapped), ElementsAreArray({0, 1, 2, 3, 4, 5, 6, 7, 12, 13, 14, 15, 16, 17, 18, 19}));
  EXPECT_EQ(token.use_count(), 2);
  wrapped = nullptr;
  cache->flush();
  EXPECT_EQ(token.use_count(), 1);
}

TEST_P(ResourceTest, WhatCannotBeMadeIsNothing) {
  EXPECT_EQ(library_->function("missing"), nullptr);
  EXPECT_EQ(pipeline("nowhere"), nullptr);
  EXPECT_EQ(pipeline("plainVertex"), nullptr);
  EXPECT_EQ(device_->makeRenderPipeline(
                {library_->function("plainVertex"), library_->function("addOne"), PixelFormat::bgra8Unorm}),
            nullptr);
  EXPECT_EQ(texture(maxTextureSide + 1, 1), nullptr);
  EXPECT_EQ(device_->makeBuffer(maxBufferLength + 1, StorageMode::deviceOnly), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Devices, ResourceTest, testing::ValuesIn(allDevices()), deviceName);

}  // namespace
}  // namespace velicor::gpu::test
