#pragma once

#include <functional>
#include <mutex>

#include "platform/base/pixel_buffer.h"
#include "platform/screencapture/screen_capture.h"

namespace velicor {

// The receiving end of a capture stream: passes the picture of every complete frame on and drops everything
// else. Knows nothing of the session that it works for.
class FrameOutput : public screencapture::StreamOutput {
 public:
  using Handler = std::function<void(const PixelBufferRef&)>;

  // Any thread but the output queue's. When it returns, the previous handler isn't running and is not called
  // any more.
  void setHandler(Handler handler);

  // Whether frames are passed on, as they are at first. Any thread but the output queue's; when it returns, none is
  // being passed on that should not be.
  void setPassing(bool passing);

  // On the output queue; calls the handler there.
  void didOutputSampleBuffer(screencapture::Stream& stream, const screencapture::SampleBuffer& sample,
                             screencapture::OutputType type) override;

 private:
  std::mutex mutex_;
  Handler handler_;
  bool passing_ = true;
};

}  // namespace velicor
