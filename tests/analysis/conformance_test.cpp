// Every other device against the native one: counters equal exactly, pictures within one code value.
#include <cstring>
#include <random>

#include <gmock/gmock.h>
#include <QImage>
#include <QTemporaryDir>

#include "analysis/kernel_fixture.h"
#include "analysis/metal_processor.h"
#include "support/log_recorder.h"
#include "support/main_loop.h"

namespace velicor::test {
namespace {

// Of all components; more than any where the sizes differ.
int largestDifference(const Pixels& a, const Pixels& b) {
  if (a.width != b.width || a.height != b.height) return 256;
  int largest = 0;
  for (std::size_t i = 0; i < a.rgba.size(); ++i) {
    for (std::size_t channel = 0; channel < 4; ++channel)
      largest = std::max(largest, std::abs(a.rgba[i][channel] - b.rgba[i][channel]));
  }
  return largest;
}

class ConformanceTest : public KernelTest {
 protected:
  int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(random_); }
  Rgb anyColor() { return {below(256), below(256), below(256)}; }

  // All lightnesses of skin, and what lies around on every side.
  Rgb anySkin() {
    const int light = below(140);
    const auto near = [&](int value) { return std::clamp(value * light / 100 + below(41) - 20, 0, 255); };
    return {near(194), near(150), near(130)};
  }

  // Another kind of content at every call.
  PixelBufferRef nextFrame(gpu::Extent size) {
    const Rgb from = anyColor(), to = anyColor();
    const std::function<Rgb(int, int)> contents[] = {
        [&](int, int) { return anyColor(); },
        [&](int, int) { return from; },
        [&](int x, int y) {
          return Rgb{from[0] * x / size.width, to[1] * y / size.height, (from[2] + x + y) % 256};
        },
        [&](int, int) {
          return Rgb{255 * below(2), 255 * below(2), 255 * below(2)};
        },
        [&](int, int) { return anySkin(); },
    };
    return frameOf(size.width, size.height, contents[frames_++ % std::size(contents)]);
  }

  Palette::Buffer anyPalette() {
    Palette::Buffer palette;
    for (auto& color : palette)
      color = {static_cast<float>(below(1001)) / 1000, static_cast<float>(below(256)) / 255, 0.5F, 1};
    return palette;
  }

  KernelRunner reference_{gpu::makeNativeDevice()};

 private:
  std::mt19937 random_{11};
  std::size_t frames_ = 0;
};

TEST_P(ConformanceTest, AnalysesFramesOfAllKinds) {
  struct Case {
    gpu::Extent size;
    int frames;
  };
  for (const auto& [size, frames] : {Case{{3840, 2160}, 1}, Case{{2, 2}, 5}, Case{{3, 257}, 5},
                                     Case{{641, 403}, 5}, Case{{4096, 16}, 3}, Case{{1920, 1080}, 1}}) {
    for (int i = 0; i < frames; ++i) {
      const auto frame = nextFrame(size);
      const auto palette = anyPalette();
      const int stride = 1 + below(7);
      SCOPED_TRACE(testing::Message()
                   << size.width << " x " << size.height << " number " << i << " at " << stride);
      const Scopes expected = reference_.scopesOf(frame, stride), scopes = scopesOf(frame, stride);
      EXPECT_TRUE(scopes.vectorscope == expected.vectorscope);
      EXPECT_TRUE(scopes.parade == expected.parade);
      EXPECT_LE(largestDifference(scopes.vectorscopeImage, expected.vectorscopeImage), 1);
      EXPECT_LE(largestDifference(scopes.paradeImage, expected.paradeImage), 1);
      for (const int mode : {1, 2}) {
        EXPECT_LE(largestDifference(falseColorOf(frame, mode, palette),
                                    reference_.falseColorOf(frame, mode, palette)),
                  1);
      }
    }
  }
}

TEST_P(ConformanceTest, DrawsAtAnySize) {
  for (int i = 0; i < 40; ++i) {
    const auto frame = nextFrame({1 + below(300), 1 + below(300)});
    const gpu::Extent target{1 + below(400), 1 + below(400)};
    // A whole number of pixels: every other one has its edges on pixel centres.
    const float share = static_cast<float>(1 + below(target.width)) / static_cast<float>(target.width);
    const kernels::Scale scale{share, i % 2 == 0 ? 1 : share};
    EXPECT_LE(largestDifference(drawn(frame, target, scale), reference_.drawn(frame, target, scale)), 1)
        << frame->width() << " x " << frame->height() << " in " << target.width << " x " << target.height
        << ", scale " << scale.x << ", " << scale.y;
  }
}

// Whether a texel is covered or not shows in speckles.
TEST_P(ConformanceTest, ScopesMadeSmallerAgreeToTheBit) {
  const auto parade =
      frameOf(kernels::paradeWidth, kernels::paradeHeight, [&](int, int) { return anyColor(); });
  const auto vectorscope =
      frameOf(kernels::vectorscopeSide, kernels::vectorscopeSide, [&](int, int) { return anyColor(); });
  const auto difference = [&](const PixelBufferRef& frame, gpu::Extent size, kernels::Scale scale) {
    return largestDifference(drawn(frame, size, scale, "blitScope"),
                             reference_.drawn(frame, size, scale, "blitScope"));
  };
  for (int width = 160; width < kernels::vectorscopeSide; width += 1 + below(15)) {
    const gpu::Extent size{width, width / 3};
    const float height =
        static_cast<float>(width) / static_cast<float>(size.height) * 256 / kernels::paradeWidth;
    EXPECT_EQ(difference(parade, size, {1, height}), 0) << width;
    EXPECT_EQ(difference(vectorscope, {width, width}, {}), 0) << width;
  }
  for (const auto& size :
       {gpu::Extent{390, 130}, gpu::Extent{256, 256}, gpu::Extent{7, 3}, gpu::Extent{1, 1}})
    EXPECT_EQ(difference(vectorscope, size, {1, 0.5F}), 0) << size.width;
}

// From the captured frame to the diagnostic pictures.
TEST_P(ConformanceTest, TheSixtiethFrameIsDumpedAlike) {
  std::vector<PixelBufferRef> frames;
  for (int i = 0; i < 60; ++i)
    frames.push_back(nextFrame({97, 61}));
  const QTemporaryDir folder;
  const auto dumped = [&](const std::shared_ptr<gpu::Device>& device) {
    qputenv("VELICOR_DUMP", folder.filePath("picture").toUtf8());
    const LogRecorder log;
    const auto processor = MetalProcessor::create(device);
    for (const auto& frame : frames)
      processor->ingest(frame);
    EXPECT_TRUE(waitUntil([&] { return log.contains("Velicor: dumped parade (780x256)"); }));
    qunsetenv("VELICOR_DUMP");
    std::vector<Pixels> pictures;
    for (const char* name : {"loupe", "vectorscope", "parade"}) {
      const QImage image = QImage(folder.filePath(QString("picture-%1.png").arg(name)));
      Pixels& pixels = pictures.emplace_back(Pixels{image.width(), image.height(), {}});
      pixels.rgba.resize(static_cast<std::size_t>(image.width() * image.height()));
      std::memcpy(pixels.rgba.data(), image.convertToFormat(QImage::Format_RGBA8888).constBits(),
                  4 * pixels.rgba.size());
    }
    return pictures;
  };
  const auto expected = dumped(gpu::makeNativeDevice()), pictures = dumped(device_);
  EXPECT_EQ(expected[0].width, 97);
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_LE(largestDifference(pictures[i], expected[i]), 1) << i;
}

// The native device is the first of all.
std::vector<gpu::test::TestDevice> otherDevices() {
  auto devices = gpu::test::allDevices();
  devices.erase(devices.begin());
  return devices;
}

INSTANTIATE_TEST_SUITE_P(Devices, ConformanceTest, testing::ValuesIn(otherDevices()), gpu::test::deviceName);

}  // namespace
}  // namespace velicor::test
