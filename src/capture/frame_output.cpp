#include "capture/frame_output.h"

#include <utility>

#include "diagnostics/debug_dump.h"

namespace velicor {

namespace {

bool isComplete(const screencapture::SampleBuffer& sample) {
  return sample.isValid && !sample.attachments.empty() &&
         sample.attachments.front().status == screencapture::FrameStatus::complete;
}

}  // namespace

void FrameOutput::setHandler(Handler handler) {
  const std::scoped_lock guard(mutex_);
  handler_ = std::move(handler);
}

void FrameOutput::setPassing(bool passing) {
  const std::scoped_lock guard(mutex_);
  passing_ = passing;
}

void FrameOutput::didOutputSampleBuffer(screencapture::Stream& /*stream*/,
                                        const screencapture::SampleBuffer& sample,
                                        screencapture::OutputType type) {
  if (type != screencapture::OutputType::screen || !isComplete(sample) || !sample.imageBuffer) return;
  DebugDump::tick("captured");
  const std::scoped_lock guard(mutex_);
  if (handler_ && passing_) handler_(sample.imageBuffer);
}

}  // namespace velicor
