#include "platform/screencapture/x11/service.h"

#include <chrono>
#include <utility>

#include "platform/dispatch/completion.h"
#include "platform/log/log.h"
#include "platform/screencapture/x11/capture_engine.h"
#include "platform/screencapture/x11/capture_stream.h"

namespace velicor::screencapture {

namespace {

using Clock = std::chrono::steady_clock;

// A connection that ends this soon after the one before was not ended by accident.
constexpr std::chrono::seconds shortestLife{1};

class X11Service : public Service {
 public:
  X11Service(std::string display, std::unique_ptr<x11::Connection> connection, x11::OwnClients& own,
             std::function<void()> onLost)
      : display_(std::move(display)),
        own_(own),
        onLost_(std::move(onLost)),
        engine_(makeEngine(std::move(connection))) {}

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
  std::unique_ptr<CaptureEngine> makeEngine(std::unique_ptr<x11::Connection> connection) {
    begun_ = Clock::now();
    return std::make_unique<CaptureEngine>(std::move(connection), own_, [service = std::weak_ptr(life_)] {
      if (const auto alive = service.lock()) (*alive)->connectionEnded();
    });
  }

  // The streams of the old engine are about to say that they stopped; new ones run on another.
  void connectionEnded() {
    if (Clock::now() - begun_ >= shortestLife) {
      if (auto connection = x11::Connection::open(display_, own_)) {
        log::Logger("capture").error(
            "the X server ended the capture's connection; it goes on with another one");
        engine_ = makeEngine(std::move(*connection));
        return;
      }
    }
    if (onLost_) std::exchange(onLost_, {})();
  }

  const std::string display_;
  x11::OwnClients& own_;
  std::function<void()> onLost_;
  const std::shared_ptr<X11Service*> life_ = std::make_shared<X11Service*>(this);
  Clock::time_point begun_;  // of the present connection
  std::unique_ptr<CaptureEngine> engine_;
};

}  // namespace

Result<std::unique_ptr<Service>> makeX11Service(const std::string& displayName, x11::OwnClients& own,
                                                std::function<void()> onLost) {
  auto connection = x11::Connection::open(displayName, own);
  if (!connection) return failure(errorDomain, connectionLost, connection.error().description);
  return std::make_unique<X11Service>(displayName, std::move(*connection), own, std::move(onLost));
}

}  // namespace velicor::screencapture
