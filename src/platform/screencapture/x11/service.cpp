#include "platform/screencapture/x11/service.h"

#include <utility>

#include "platform/dispatch/completion.h"
#include "platform/screencapture/x11/capture_engine.h"
#include "platform/screencapture/x11/capture_stream.h"

namespace velicor::screencapture {

namespace {

class X11Service : public Service {
 public:
  X11Service(std::unique_ptr<x11::Connection> connection, x11::OwnClients& own, std::function<void()> onLost)
      : engine_(std::make_unique<CaptureEngine>(std::move(connection), own, std::move(onLost))) {}

  QCoro::Task<Result<ShareableContent>> shareableContent(ContentQuery query) override {
    dispatch::Completion<Result<ShareableContent>> answer;
    const bool taken = engine_->mailbox()->post(
        [engine = engine_.get(), answer, query] { answer.resolve(engine->content(query)); });
    if (!taken) answer.resolve(failure(errorDomain, connectionLost, "The capture service has ended"));
    co_return co_await answer;
  }

  std::shared_ptr<Stream> makeStream(ContentFilter filter, StreamConfiguration configuration,
                                     std::weak_ptr<StreamDelegate> delegate) override {
    return CaptureStream::make(*engine_, std::move(filter), configuration, std::move(delegate));
  }

  bool preflightAccess() override { return !engine_->refusal() || engine_->refusal()->code != userDeclined; }

  // There is nobody to ask: the right comes with the connection's trust.
  bool requestAccess() override { return preflightAccess(); }

 private:
  std::unique_ptr<CaptureEngine> engine_;
};

}  // namespace

Result<std::unique_ptr<Service>> makeX11Service(const std::string& displayName, x11::OwnClients& own,
                                                std::function<void()> onLost) {
  auto connection = x11::Connection::open(displayName, own);
  if (!connection) return failure(errorDomain, connectionLost, connection.error().description);
  return std::make_unique<X11Service>(std::move(*connection), own, std::move(onLost));
}

}  // namespace velicor::screencapture
