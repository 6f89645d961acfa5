#include "capture/frame_output.h"

#include <gmock/gmock.h>

#include "capture/fake_capture_service.h"

namespace velicor {
namespace {

using screencapture::FrameStatus;
using screencapture::OutputType;
using screencapture::SampleBuffer;

class FrameOutputTest : public testing::Test {
 protected:
  FrameOutputTest() {
    output.setHandler([this](const PixelBufferRef& buffer) { received.push_back(buffer); });
  }

  void send(const SampleBuffer& sample, OutputType type = OutputType::screen) {
    output.didOutputSampleBuffer(*stream, sample, type);
  }

  test::FakeCaptureService service;
  std::shared_ptr<screencapture::Stream> stream = service.makeStream({}, {}, {});
  PixelBufferRef picture = std::make_shared<PixelBuffer>(4, 2);
  FrameOutput output;
  std::vector<PixelBufferRef> received;
};

TEST_F(FrameOutputTest, PassesCompleteFramesOnly) {
  send({true, {{FrameStatus::complete}}, picture});
  EXPECT_THAT(received, testing::ElementsAre(picture));

  for (const FrameStatus status : {FrameStatus::idle, FrameStatus::blank, FrameStatus::started,
                                   FrameStatus::suspended, FrameStatus::stopped}) {
    send({true, {{status}}, picture});
  }
  send({true, {{std::nullopt}}, picture});
  send({true, {}, picture});
  send({false, {{FrameStatus::complete}}, picture});
  send({true, {{FrameStatus::complete}}, nullptr});
  send({true, {{FrameStatus::complete}}, picture}, OutputType::audio);
  output.setPassing(false);
  send({true, {{FrameStatus::complete}}, picture});
  EXPECT_EQ(received.size(), 1u);
  output.setPassing(true);
  send({true, {{FrameStatus::complete}}, picture});
  EXPECT_EQ(received.size(), 2u);
}

}  // namespace
}  // namespace velicor
