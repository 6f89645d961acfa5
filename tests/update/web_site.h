#pragma once

#include <map>
#include <vector>

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QSslSocket>
#include <QTcpServer>

namespace velicor::test {

// Web sites on this machine under their real names: a proxy that is itself the end of every tunnel, with
// certificates of an authority of its own.
class WebSite : public QTcpServer {
 public:
  enum class Identity { product, otherName, selfSigned };

  WebSite();

  // Reaches everything through the proxy, and believes its authority.
  QNetworkAccessManager& network() { return *network_; }

  static QByteArray answer(const QByteArray& body, const QByteArray& status = "200 OK");
  static QByteArray redirection(const QByteArray& location) {
    return answer({}, "302 Found\r\nLocation: " + location);
  }

  // What "HOST/PATH" answers; everything else 404. Held connections stay open after the answer.
  void serve(const QByteArray& address, const QByteArray& answer) { answers_[address] = answer; }
  bool holdsConnections = false;
  Identity identity = Identity::product;

  // To every connection that is held.
  void sendMore(const QByteArray& bytes);
  void hangUp();

  std::vector<QByteArray> requests;  // each as it came
  std::vector<QByteArray> tunnels;   // hosts and ports asked for

 protected:
  void incomingConnection(qintptr handle) override;

 private:
  void read(QSslSocket& socket);

  std::unique_ptr<QNetworkAccessManager> network_;
  std::map<QByteArray, QByteArray> answers_;
  std::vector<QPointer<QSslSocket>> held_;
};

}  // namespace velicor::test
