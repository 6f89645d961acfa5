#include "capture/fake_capture_service.h"

#include <utility>

namespace velicor::test {

namespace {

template <typename T>
QCoro::Task<T> answer(dispatch::Completion<void> turn, T result) {
  co_await turn;
  co_return T(std::move(result));
}

template <typename T>
T takeFirst(std::deque<T>& scripted, T otherwise) {
  if (scripted.empty()) return otherwise;
  T first = std::move(scripted.front());
  scripted.pop_front();
  return first;
}

class FakeStream : public screencapture::Stream {
 public:
  FakeStream(FakeCaptureService& service, std::shared_ptr<StreamRecord> record)
      : service_(service), record_(std::move(record)) {
    record_->stream = this;
  }
  ~FakeStream() override { record_->stream = nullptr; }

  Status addStreamOutput(std::weak_ptr<screencapture::StreamOutput> output,
                         screencapture::OutputType /*type*/, dispatch::SerialQueue& queue) override {
    record_->output = std::move(output);
    record_->queue = &queue;
    return service_.added;
  }

  QCoro::Task<Status> startCapture() override {
    service_.journal.emplace_back("start");
    return answer(service_.startGate.pass(), takeFirst(service_.starts, Status()));
  }

  QCoro::Task<Status> stopCapture() override {
    service_.journal.emplace_back("stop");
    return answer(service_.stopGate.pass(), service_.changed);
  }

  QCoro::Task<Status> updateConfiguration(screencapture::StreamConfiguration configuration) override {
    service_.journal.emplace_back("configure");
    record_->configurations.push_back(configuration);
    return answer(service_.updateGate.pass(), service_.changed);
  }

  QCoro::Task<Status> updateContentFilter(screencapture::ContentFilter filter) override {
    service_.journal.emplace_back("filter");
    record_->filter = std::move(filter);
    return answer(service_.updateGate.pass(), service_.changed);
  }

 private:
  FakeCaptureService& service_;
  const std::shared_ptr<StreamRecord> record_;
};

}  // namespace

dispatch::Completion<void> Gate::pass() {
  dispatch::Completion<void> turn;
  if (closed_) {
    waiting_.push_back(turn);
  } else {
    turn.resolve();
  }
  return turn;
}

void Gate::open() {
  closed_ = false;
  for (const auto& turn : std::exchange(waiting_, {}))
    turn.resolve();
}

void StreamRecord::deliver(const screencapture::SampleBuffer& sample, screencapture::OutputType type) const {
  queue->async([this, sample, type] {
    if (const auto receiver = output.lock()) receiver->didOutputSampleBuffer(*stream, sample, type);
  });
  queue->drain();
}

void StreamRecord::stopWithError(const Error& error) const {
  if (const auto receiver = delegate.lock()) receiver->didStopWithError(*stream, error);
}

QCoro::Task<Result<screencapture::ShareableContent>> FakeCaptureService::shareableContent(
    screencapture::ContentQuery query) {
  journal.emplace_back(query.excludingDesktopWindows || query.onScreenWindowsOnly ? "narrow query" : "query");
  return answer(queryGate.pass(), takeFirst(contents, Result<screencapture::ShareableContent>(content)));
}

std::shared_ptr<screencapture::Stream> FakeCaptureService::makeStream(
    screencapture::ContentFilter filter, screencapture::StreamConfiguration configuration,
    std::weak_ptr<screencapture::StreamDelegate> delegate) {
  journal.push_back("make " + std::to_string(filter.display.displayID));
  auto record = std::make_shared<StreamRecord>();
  record->filter = std::move(filter);
  record->configurations.push_back(configuration);
  record->delegate = std::move(delegate);
  streams.push_back(record);
  return std::make_shared<FakeStream>(*this, record);
}

bool FakeCaptureService::requestAccess() {
  journal.emplace_back("request access");
  return access;
}

}  // namespace velicor::test
