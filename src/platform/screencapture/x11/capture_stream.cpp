#include "platform/screencapture/x11/capture_stream.h"

#include <utility>

namespace velicor::screencapture {

namespace {

constexpr int largestSide = 32767;

tl::unexpected<Error> refuse(std::string_view why) { return failure(errorDomain, serverRefused, why); }

Status valid(const StreamConfiguration& configuration) {
  const auto outside = [](int side) { return side < 1 || side > largestSide; };
  if (outside(configuration.width) || outside(configuration.height))
    return refuse("Frames of this size can't be made");
  if (configuration.queueDepth < 1) return refuse("A stream needs room for a frame");
  if (configuration.showsCursor) return refuse("The pointer can't be shown in captured frames");
  return {};
}

}  // namespace

std::shared_ptr<CaptureStream> CaptureStream::make(CaptureEngine& engine, ContentFilter filter,
                                                   StreamConfiguration configuration,
                                                   std::weak_ptr<StreamDelegate> delegate) {
  std::shared_ptr<CaptureStream> stream(
      new CaptureStream(engine, std::move(filter), configuration, std::move(delegate)));
  stream->delivery_->connect(stream);
  return stream;
}

CaptureStream::CaptureStream(CaptureEngine& engine, ContentFilter filter, StreamConfiguration configuration,
                             std::weak_ptr<StreamDelegate> delegate)
    : engine_(&engine),
      mailbox_(engine.mailbox()),
      delivery_(std::make_shared<Delivery>(std::move(delegate))),
      filter_(std::move(filter)),
      configuration_(configuration) {}

CaptureStream::~CaptureStream() {
  delivery_->close();
  mailbox_->post([engine = engine_, delivery = delivery_] { engine->stop(delivery); });
}

CaptureStream::Answer CaptureStream::ask(std::function<Status(CaptureEngine&)> question) {
  Answer answer;
  const bool taken = mailbox_->post(
      [engine = engine_, answer, question = std::move(question)] { answer.resolve(question(*engine)); });
  if (!taken) answer.resolve(failure(errorDomain, connectionLost, "The capture service has ended"));
  return answer;
}

Status CaptureStream::addStreamOutput(std::weak_ptr<StreamOutput> output, OutputType type,
                                      dispatch::SerialQueue& queue) {
  if (type != OutputType::screen) return refuse("Only pictures of the screen can be captured");
  if (state_ != State::made) return refuse("The stream was already started");
  delivery_->setOutput(std::move(output), queue);
  return {};
}

QCoro::Task<Status> CaptureStream::startCapture() {
  if (state_ != State::made) co_return refuse("A stream can be started once");
  if (const Status status = valid(configuration_); !status) co_return status;
  state_ = State::started;
  const Answer answer =
      ask([delivery = delivery_, filter = filter_, configuration = configuration_](CaptureEngine& engine) {
        return engine.start(delivery, filter, configuration);
      });
  co_return co_await answer;
}

QCoro::Task<Status> CaptureStream::stopCapture() {
  if (state_ != State::started) co_return refuse("The stream is not running");
  state_ = State::stopped;
  const Answer answer;
  const std::shared_ptr<Delivery> delivery = delivery_;
  const bool taken = mailbox_->post([engine = engine_, delivery, answer] {
    engine->stop(delivery);
    delivery->closeAndDrain(answer);
  });
  if (!taken) delivery->closeAndDrain(answer);
  co_return co_await answer;
}

QCoro::Task<Status> CaptureStream::updateConfiguration(StreamConfiguration configuration) {
  if (const Status status = valid(configuration); !status) co_return status;
  configuration_ = configuration;
  if (state_ == State::made) co_return Status();
  const Answer answer = ask([delivery = delivery_, configuration](CaptureEngine& engine) {
    return engine.configure(delivery, configuration);
  });
  co_return co_await answer;
}

QCoro::Task<Status> CaptureStream::updateContentFilter(ContentFilter filter) {
  filter_ = filter;
  if (state_ == State::made) co_return Status();
  const Answer answer = ask(
      [delivery = delivery_, filter](CaptureEngine& engine) { return engine.setFilter(delivery, filter); });
  co_return co_await answer;
}

}  // namespace velicor::screencapture
