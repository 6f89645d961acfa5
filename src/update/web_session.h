#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QByteArray>
#include <QUrl>

#include "platform/base/error.h"
#include "platform/dispatch/clock.h"
#include "platform/dispatch/completion.h"

class QNetworkAccessManager;

namespace velicor {

struct WebRequest {
  QUrl url;

  // The longest silence of the server, from the request on; and the longest time for everything.
  dispatch::Duration patience;
  dispatch::Duration allowance = dispatch::Duration::max();

  // Neither reads from a cache nor lets one on the way answer.
  bool ignoresCaches = false;

  // Whether the server may send us on to this address.
  std::function<bool(const QUrl&)> mayFollow;

  // Gets the body piece by piece, with the status code of the answer. A failure ends the transfer.
  std::function<Status(int status, const QByteArray& piece)> receive;
};

// Makes requests that tell the server nothing about the user: no cookies, no language, no version. Main
// thread.
class WebSession {
 public:
  // Both outlive the session.
  WebSession(QNetworkAccessManager& network, dispatch::Clock& clock);

  // Ends what is under way with a failure.
  ~WebSession();
  WebSession(const WebSession&) = delete;
  WebSession& operator=(const WebSession&) = delete;

  // A GET. Gives the status code, whichever it is, once the whole body was received, or the failure of the
  // way there: no connection, no trust in the certificate, a body that breaks off, silence, a redirection
  // that may not be followed.
  dispatch::Completion<Result<int>> get(WebRequest request);

 private:
  class Transfer;

  QNetworkAccessManager& network_;
  dispatch::Clock& clock_;
  std::vector<std::unique_ptr<Transfer>> transfers_;
};

}  // namespace velicor
