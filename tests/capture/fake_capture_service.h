#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/dispatch/completion.h"
#include "platform/screencapture/screen_capture.h"

namespace velicor::test {

// Holds operations of the fake service until the test lets them go on.
class Gate {
 public:
  // An open gate; continues on a later turn of the main queue all the same.
  dispatch::Completion<void> pass();
  void close() { closed_ = true; }
  void open();

 private:
  bool closed_ = false;
  std::vector<dispatch::Completion<void>> waiting_;
};

class FakeCaptureService;

// What the test sees of one stream, during its life and after it.
struct StreamRecord {
  screencapture::Stream* stream = nullptr;  // none once it is destroyed
  screencapture::ContentFilter filter;
  std::vector<screencapture::StreamConfiguration> configurations;  // the first one and the updates
  std::weak_ptr<screencapture::StreamOutput> output;
  std::weak_ptr<screencapture::StreamDelegate> delegate;
  dispatch::SerialQueue* queue = nullptr;

  // Sends a sample on the output queue and waits until it was received.
  void deliver(const screencapture::SampleBuffer& sample,
               screencapture::OutputType type = screencapture::OutputType::screen) const;

  // Ends the stream as the service would; the session hears of it through the main queue.
  void stopWithError(const Error& error) const;
};

// A capture service that does what the test says and writes down what is asked of it, one line a call:
// "query", "make 7" (display 7), "start", "stop", "configure", "filter", "request access".
class FakeCaptureService : public screencapture::Service {
 public:
  QCoro::Task<Result<screencapture::ShareableContent>> shareableContent(
      screencapture::ContentQuery query) override;
  std::shared_ptr<screencapture::Stream> makeStream(
      screencapture::ContentFilter filter, screencapture::StreamConfiguration configuration,
      std::weak_ptr<screencapture::StreamDelegate> delegate) override;
  bool preflightAccess() override { return access; }
  bool requestAccess() override;

  // The journal since the last call.
  std::vector<std::string> takeJournal() { return std::exchange(journal, {}); }
  StreamRecord& lastStream() { return *streams.back(); }

  std::vector<std::string> journal;
  std::vector<std::shared_ptr<StreamRecord>> streams;
  bool access = true;

  // Answers to the next queries; `content` when there are none.
  std::deque<Result<screencapture::ShareableContent>> contents;
  screencapture::ShareableContent content;

  // Outcomes of the next starts; success when there are none.
  std::deque<Status> starts;
  Status added;    // outcome of adding the output
  Status changed;  // outcome of stops, updates of the configuration and of the filter

  Gate queryGate;
  Gate startGate;
  Gate stopGate;
  Gate updateGate;
};

}  // namespace velicor::test
