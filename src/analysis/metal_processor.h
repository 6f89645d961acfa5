#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "analysis/scope_reading.h"
#include "palette/palette.h"
#include "platform/base/pixel_buffer.h"
#include "platform/gpu/device.h"

namespace velicor {

// Turns each captured frame into three pictures on a device: the preview (the frame recoloured for the
// current mode), the vectorscope and the RGB parade. The scopes always describe the captured pixels, never
// the preview.
//
// Frames come in on the capture queue, everything else is called on the main thread. Results are published
// by a device thread; reading them is possible from any. A frame that can't be analysed (too small, no
// memory) is dropped without a word, and the results of the one before stay. Results that a device has lost
// are none; when it is back, the last frame is analysed again. Nothing ever waits for the device.
class MetalProcessor : public std::enable_shared_from_this<MetalProcessor> {
 public:
  // The numbers are stored in the settings.
  enum class Mode : int { original = 0, skin = 1, exposure = 2 };
  static constexpr std::array allModes{Mode::original, Mode::skin, Mode::exposure};
  static constexpr int id(Mode mode) { return static_cast<int>(mode); }
  static std::optional<Mode> modeFrom(int rawValue);

  using Callback = std::function<void()>;

  // nullptr where the device (none: nothing can be made) lacks a kernel or memory.
  static std::shared_ptr<MetalProcessor> create(
      std::shared_ptr<gpu::Device> device = gpu::systemDefaultDevice());

  MetalProcessor(const MetalProcessor&) = delete;
  MetalProcessor& operator=(const MetalProcessor&) = delete;

  // Takes one frame and returns once its analysis is committed. The buffer is kept until the next one comes.
  // Frames of less than 2 pixels a side are ignored.
  void ingest(const PixelBufferRef& frame);

  // New colours for the preview, shown at once on the last frame.
  void setPalette(const Palette::Buffer& palette);

  // Analyses the last frame again, scopes included; nothing without a frame, or without a device.
  // While the device is still busy with an earlier call, calls are run into one that follows, with what is
  // set by then: a slider that moves on a large frame leaves no queue behind.
  void reanalyze();

  // Forgets the frame, all results and the frame count, and calls both callbacks so that the views empty.
  void reset();

  // The newest results, each nullptr while there is none. The objects are drawn into again by later frames,
  // in the device's commit order: whoever reads them with a command buffer sees a whole picture.
  std::shared_ptr<gpu::Texture> preview() const;
  std::shared_ptr<gpu::Texture> vectorscope() const;
  std::shared_ptr<gpu::Texture> parade() const;

  // The captured frame that the newest results belong to (BGRA, alpha without meaning). A frame of another
  // size comes as another texture.
  std::shared_ptr<gpu::Texture> frame() const;

  // Reads what the newest scope images were made from, and calls the handler with it on the main thread; with none where
  // there are no images, or no reading is to be had. A copy of a megabyte: meant for words, not for every frame. The
  // handler may end on a device thread: it owns nothing that belongs to the main thread.
  void readScopes(const std::function<void(std::optional<ScopeReading>)>& handler);

  const std::shared_ptr<gpu::Device>& device() const { return device_; }

  // How many pixels lie between two samples of the scopes, in both directions: at most about 250,000 samples.
  static int sampleStride(int width, int height);

  // What the preview shows, and whether there is one at all. Taken up by the next analysis.
  std::atomic<Mode> mode{Mode::skin};
  std::atomic<bool> previewEnabled{true};

  // Scopes are computed on every scopeDivider-th frame; 0 and less mean every frame.
  std::atomic<int> scopeDivider{3};

  // Called on the main thread after a preview, or a pair of scope images, was published or taken away; never
  // once the owner has let go. Set on the main thread. The processor, and they with it, may end on a device
  // thread that is just publishing: they own nothing that belongs to the main thread.
  Callback onPreview;
  Callback onScopes;

 private:
  struct Pipelines {
    std::shared_ptr<gpu::ComputePipeline> falseColor;
    std::shared_ptr<gpu::ComputePipeline> accumulate;
    std::shared_ptr<gpu::ComputePipeline> vsRender;
    std::shared_ptr<gpu::ComputePipeline> paradeRender;
  };
  struct Results {
    std::shared_ptr<gpu::Texture> preview;
    std::shared_ptr<gpu::Texture> vectorscope;
    std::shared_ptr<gpu::Texture> parade;
    std::shared_ptr<gpu::Texture> frame;
    std::uint64_t lossCount = 0;  // the device's, before which they have no contents
  };
  // What one analysis will publish when it has completed.
  struct Outcome {
    std::shared_ptr<gpu::Texture> preview;
    std::shared_ptr<gpu::Texture> frame;
    bool includesScopes = false;
    std::uint64_t session = 0;
    std::uint64_t source = 0;  // the upload's number, as uploads_ counts
  };

  explicit MetalProcessor(std::shared_ptr<gpu::Device> device) : device_(std::move(device)) {}
  bool prepare();
  bool buildPipelines();
  void watchDevice();

  // Callers of these hold gpuLock_.
  bool upload(gpu::CommandBuffer& commands);  // of the last frame; false where that can't be had
  void prepareRegionTexture(gpu::Extent size);
  void encodeUpload(gpu::CommandBuffer& commands, const std::shared_ptr<gpu::Texture>& frame);
  void encodeAnalysis(gpu::CommandBuffer& commands, bool includeScopes);
  void encodePreview(gpu::CommandBuffer& commands, Mode previewMode);
  void encodeScopes(gpu::CommandBuffer& commands);
  void encodeAccumulation(gpu::CommandBuffer& commands, int stride, gpu::Extent samples);
  void encodeScopeImage(gpu::CommandBuffer& commands, const std::shared_ptr<gpu::ComputePipeline>& pipeline,
                        const std::shared_ptr<gpu::Buffer>& counters, float gain,
                        const std::shared_ptr<gpu::Texture>& image);
  void dumpPictures();

  bool analyzeAgain();  // false where nothing will come of it
  bool joinsReanalysis();
  void reanalysisDone();  // a device thread

  void deviceReturned();
  void forgetResults();
  bool hasLostResults() const;

  // This upload, or one before, may have come to nothing. Any thread.
  void noteLost(std::uint64_t upload);

  // The device's loss count when the analysis was recorded. A device thread.
  void publish(const Outcome& outcome, std::uint64_t lossCount);
  void announceLater(bool includesScopes);
  std::shared_ptr<gpu::Texture> published(std::shared_ptr<gpu::Texture> Results::*result) const;

  const std::shared_ptr<gpu::Device> device_;
  gpu::Device::Watch deviceReturns_;
  std::shared_ptr<gpu::CommandQueue> queue_;
  Pipelines pipelines_;
  std::shared_ptr<gpu::Buffer> vsBuffer_;
  std::shared_ptr<gpu::Buffer> paradeBuffer_;
  std::shared_ptr<gpu::Texture> vsTexture_;
  std::shared_ptr<gpu::Texture> paradeTexture_;
  std::shared_ptr<gpu::TextureCache> textureCache_;

  // Serialises all encoding. Never held together with lock_.
  std::mutex gpuLock_;
  Palette::Buffer palette_ = Palette::standard().buffer();
  PixelBufferRef lastFrame_;
  std::shared_ptr<gpu::Texture> regionTexture_;  // the device's copy of a frame
  std::uint64_t regionUpload_ = 0;               // the last upload into it; 0: none
  std::uint64_t regionLossCount_ = 0;            // the device's, at that time
  std::shared_ptr<gpu::Texture> outTexture_;     // the preview picture
  int ingestCount_ = 0;                          // since creation or the last reset
  std::uint64_t uploads_ = 0;                    // uploads since creation

  // Up to this one the uploads may have come to nothing.
  std::atomic<std::uint64_t> lostUploads_{0};

  // Of calls of reanalyze(): none on the device, one there, one there and another to follow.
  enum class Reanalysis { none, running, followed };
  std::atomic<Reanalysis> reanalysis_{Reanalysis::none};

  // Grows with every reset: what was under way before is not published after it.
  std::atomic<std::uint64_t> session_{0};

  mutable std::mutex lock_;  // guards results_
  Results results_;
};

}  // namespace velicor
