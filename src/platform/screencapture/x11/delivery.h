#pragma once

#include <memory>
#include <mutex>

#include "platform/base/ring.h"
#include "platform/dispatch/completion.h"
#include "platform/screencapture/screen_capture.h"

namespace velicor::screencapture {

// The way of samples from the capture thread to a stream's receiver, and of its end to the delegate. Shared
// by the stream and the capture thread; callable from any thread.
class Delivery : public std::enable_shared_from_this<Delivery> {
 public:
  explicit Delivery(std::weak_ptr<StreamDelegate> delegate) : delegate_(std::move(delegate)) {}

  // Before samples flow. `stream` is what receivers are told they come from.
  void connect(std::weak_ptr<Stream> stream) { stream_ = std::move(stream); }
  void setOutput(std::weak_ptr<StreamOutput> output, dispatch::SerialQueue& queue);

  void send(SampleBuffer sample);

  // Tells the delegate, on the calling thread, unless the delivery was closed before.
  void fail(const Error& error);

  // Nothing is put on the queue from now on, and what waits there is dropped.
  void close();

  // Closes, and resolves when the receiver has returned from its last sample.
  void closeAndDrain(dispatch::Completion<Status> done);

 private:
  void handNext();

  std::weak_ptr<StreamDelegate> delegate_;
  std::weak_ptr<Stream> stream_;
  std::mutex mutex_;
  std::weak_ptr<StreamOutput> output_;
  dispatch::SerialQueue* queue_ = nullptr;
  bool closed_ = false;
  Ring<SampleBuffer> waiting_;      // as many as jobs on the queue
  std::shared_ptr<Delivery> self_;  // while there are any
};

}  // namespace velicor::screencapture
