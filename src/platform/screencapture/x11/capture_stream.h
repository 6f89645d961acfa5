#pragma once

#include <functional>
#include <memory>

#include "platform/dispatch/completion.h"
#include "platform/screencapture/screen_capture.h"
#include "platform/screencapture/x11/capture_engine.h"

namespace velicor::screencapture {

// The main thread's side of a stream: passes every call on to the capture thread.
class CaptureStream : public Stream {
 public:
  // The engine may go first; calls then fail.
  static std::shared_ptr<CaptureStream> make(CaptureEngine& engine, ContentFilter filter,
                                             StreamConfiguration configuration,
                                             std::weak_ptr<StreamDelegate> delegate);
  ~CaptureStream() override;

  Status addStreamOutput(std::weak_ptr<StreamOutput> output, OutputType type,
                         dispatch::SerialQueue& queue) override;
  QCoro::Task<Status> startCapture() override;
  QCoro::Task<Status> stopCapture() override;
  QCoro::Task<Status> updateConfiguration(StreamConfiguration configuration) override;
  QCoro::Task<Status> updateContentFilter(ContentFilter filter) override;

 private:
  using Answer = dispatch::Completion<Status>;
  enum class State { made, started, stopped };

  CaptureStream(CaptureEngine& engine, ContentFilter filter, StreamConfiguration configuration,
                std::weak_ptr<StreamDelegate> delegate);

  Answer ask(std::function<Status(CaptureEngine&)> question);

  CaptureEngine* const engine_;  // only used in jobs, which its thread runs
  const std::shared_ptr<Mailbox> mailbox_;
  const std::shared_ptr<Delivery> delivery_;
  ContentFilter filter_;
  StreamConfiguration configuration_;
  State state_ = State::made;
};

}  // namespace velicor::screencapture
