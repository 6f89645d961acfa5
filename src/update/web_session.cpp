#include "update/web_session.h"

#include <algorithm>
#include <utility>

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>

#include "platform/base/product.h"

namespace velicor {

namespace {

constexpr std::string_view errorDomain = "velicor.web";
enum TransferError { timedOut = 1, redirected, cutOff, cancelled, unreachable };

// The pieces that a body is taken in. The library gets no limit for what it reads ahead: with one, it forgets
// the last bytes of an encrypted body when the server closes at once, and the transfer stalls.
constexpr qint64 pieceSize = 256LL * 1024;
constexpr int mostRedirections = 5;

tl::unexpected<Error> transferFailed(TransferError code, std::string_view description) {
  return failure(errorDomain, code, description);
}

QNetworkRequest libraryRequest(const WebRequest& request) {
  using Request = QNetworkRequest;
  Request result(request.url);
  result.setAttribute(Request::RedirectPolicyAttribute, Request::UserVerifiedRedirectPolicy);
  result.setMaximumRedirectsAllowed(mostRedirections);
  result.setAttribute(Request::Http2AllowedAttribute, false);
  for (const auto attribute : {Request::CookieLoadControlAttribute, Request::CookieSaveControlAttribute,
                               Request::AuthenticationReuseAttribute}) {
    result.setAttribute(attribute, Request::Manual);
  }
  if (request.ignoresCaches) {
    result.setAttribute(Request::CacheLoadControlAttribute, Request::AlwaysNetwork);
    result.setAttribute(Request::CacheSaveControlAttribute, false);
  }
  result.setRawHeader("User-Agent", QByteArray::fromStdString(std::string(product::name)));
  result.setRawHeader("Accept-Language", "*");
  return result;
}

int statusOf(const QNetworkReply& reply) {
  return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

// Whether the error is just another word for the status code of a complete answer.
bool isOfStatus(const QNetworkReply& reply) {
  const int error = reply.error();
  const bool ofContent =
      error >= QNetworkReply::ContentAccessDenied && error != QNetworkReply::ProtocolFailure;
  return ofContent && statusOf(reply) >= 400;
}

}  // namespace

class WebSession::Transfer : public QObject {
 public:
  Transfer(WebRequest request, dispatch::Clock& clock) : request_(std::move(request)), clock_(clock) {}
  ~Transfer() override { end(transferFailed(cancelled, "the transfer was cancelled")); }

  void start(QNetworkAccessManager& network) {
    begun_ = lastSign_ = clock_.now();
    reply_ = network.get(libraryRequest(request_));
    connect(reply_, &QNetworkReply::metaDataChanged, this, &Transfer::noteSign);
    connect(reply_, &QNetworkReply::readyRead, this, &Transfer::takePieces);
    connect(reply_, &QNetworkReply::redirected, this, &Transfer::follow);
    connect(reply_, &QNetworkReply::finished, this, &Transfer::takeEnd);
    watch();
  }

  const dispatch::Completion<Result<int>>& outcome() const { return outcome_; }

 private:
  void noteSign() { lastSign_ = clock_.now(); }

  void takePieces() {
    noteSign();
    const int status = statusOf(*reply_);
    while (reply_ && reply_->bytesAvailable() > 0) {
      const QByteArray piece = reply_->read(pieceSize);
      received_ += piece.size();
      if (const Status taken = request_.receive(status, piece); !taken) end(tl::unexpected(taken.error()));
    }
  }

  void follow(const QUrl& url) {
    noteSign();
    if (request_.mayFollow(url)) {
      Q_EMIT reply_->redirectAllowed();
    } else {
      end(transferFailed(redirected, "redirected to " + url.toEncoded().toStdString()));
    }
  }

  void takeEnd() {
    takePieces();
    if (!reply_) return;
    if (reply_->error() != QNetworkReply::NoError && !isOfStatus(*reply_)) {
      end(transferFailed(unreachable, reply_->errorString().toStdString()));
    } else if (isShort()) {
      end(transferFailed(cutOff, "the connection was closed before everything had come"));
    } else {
      end(statusOf(*reply_));
    }
  }

  // The announced length is of what comes over the line, which may be compressed.
  bool isShort() const {
    const QVariant announced = reply_->header(QNetworkRequest::ContentLengthHeader);
    return announced.isValid() && !reply_->hasRawHeader("Content-Encoding") &&
           received_ < announced.toLongLong();
  }

  void watch() {
    const dispatch::Instant now = clock_.now();
    const dispatch::Duration left =
        std::min(request_.patience - (now - lastSign_), request_.allowance - (now - begun_));
    if (left <= dispatch::Duration::zero()) return end(transferFailed(timedOut, "the request timed out"));
    clock_.callAfter(left, [this, life = std::weak_ptr<const bool>(life_)] {
      if (!life.expired()) watch();
    });
  }

  void end(Result<int> result) {
    if (!reply_) return;
    life_.reset();
    request_.receive = nullptr;  // what it holds is no longer needed
    disconnect(reply_, nullptr, this, nullptr);
    std::exchange(reply_, nullptr)->deleteLater();  // which ends what still goes on
    outcome_.resolve(std::move(result));
  }

  WebRequest request_;
  dispatch::Clock& clock_;
  QNetworkReply* reply_ = nullptr;  // while it runs
  dispatch::Instant begun_{};
  dispatch::Instant lastSign_{};  // of life from the server
  qint64 received_ = 0;
  std::shared_ptr<const bool> life_ = std::make_shared<const bool>();
  const dispatch::Completion<Result<int>> outcome_;
};

WebSession::WebSession(QNetworkAccessManager& network, dispatch::Clock& clock)
    : network_(network), clock_(clock) {}

WebSession::~WebSession() = default;

dispatch::Completion<Result<int>> WebSession::get(WebRequest request) {
  std::erase_if(transfers_, [](const auto& transfer) { return transfer->outcome().isResolved(); });
  auto& transfer = *transfers_.emplace_back(std::make_unique<Transfer>(std::move(request), clock_));
  transfer.start(network_);
  return transfer.outcome();
}

}  // namespace velicor
