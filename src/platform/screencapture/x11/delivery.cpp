#include "platform/screencapture/x11/delivery.h"

#include <utility>

namespace velicor::screencapture {

void Delivery::setOutput(std::weak_ptr<StreamOutput> output, dispatch::SerialQueue& queue) {
  const std::scoped_lock guard(mutex_);
  output_ = std::move(output);
  queue_ = &queue;
}

// Nothing is allocated for a sample: the job is but a pointer.
void Delivery::send(SampleBuffer sample) {
  const std::scoped_lock guard(mutex_);
  if (closed_ || !queue_) return;
  waiting_.push(std::move(sample));
  self_ = shared_from_this();
  queue_->async([this] { handNext(); });
}

void Delivery::handNext() {
  SampleBuffer sample;
  std::shared_ptr<Delivery> self;
  std::shared_ptr<StreamOutput> output;
  {
    const std::scoped_lock guard(mutex_);
    sample = waiting_.pop();
    self = waiting_.isEmpty() ? std::move(self_) : self_;
    if (!closed_) output = output_.lock();
  }
  const std::shared_ptr<Stream> stream = stream_.lock();
  if (output && stream) output->didOutputSampleBuffer(*stream, sample, OutputType::screen);
}

void Delivery::fail(const Error& error) {
  {
    const std::scoped_lock guard(mutex_);
    if (std::exchange(closed_, true)) return;
  }
  const std::shared_ptr<StreamDelegate> delegate = delegate_.lock();
  const std::shared_ptr<Stream> stream = stream_.lock();
  if (delegate && stream) delegate->didStopWithError(*stream, error);
}

void Delivery::close() {
  const std::scoped_lock guard(mutex_);
  closed_ = true;
}

void Delivery::closeAndDrain(dispatch::Completion<Status> done) {
  const std::scoped_lock guard(mutex_);
  closed_ = true;
  if (queue_) {
    queue_->async([done = std::move(done)] { done.resolve(Status()); });
  } else {
    done.resolve(Status());
  }
}

}  // namespace velicor::screencapture
