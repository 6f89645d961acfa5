#include "update/web_site.h"

#include <cstdlib>

#include <gtest/gtest.h>
#include <QFile>
#include <QNetworkProxy>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTemporaryDir>

namespace velicor::test {

namespace {

// Keys and certificates, made once by the program that everybody makes them with.
struct Authority {
  Authority() {
    const QByteArray makeKey =
        "openssl req -x509 -days 2 -nodes -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 ";
    run(makeKey + "-keyout authority.key -out authority.pem -subj /CN=authority");
    const QByteArray names = " -addext subjectAltName=DNS:";
    const QByteArray signedByUs = " -CA authority.pem -CAkey authority.key";
    const QByteArray host = "velicor.example";
    run(makeKey + "-keyout 0.key -out 0.pem -subj /CN=site" + names + host + ",DNS:www." + host + signedByUs);
    run(makeKey + "-keyout 1.key -out 1.pem -subj /CN=site" + names + "elsewhere.example" + signedByUs);
    run(makeKey + "-keyout 2.key -out 2.pem -subj /CN=site" + names + host);
  }

  // Not by the toolkit, whose way of starting programs makes the thread sanitizer look away from then on.
  void run(const QByteArray& command) const {
    const QByteArray quietly = "cd '" + folder.path().toLocal8Bit() + "' && " + command + " 2> said";
    if (std::system(quietly.constData()) == 0) return;
    QFile said(folder.filePath("said"));
    ADD_FAILURE() << (said.open(QIODevice::ReadOnly) ? said.readAll().toStdString() : "nothing was said");
  }

  QSslKey key(int number) const {
    QFile file(folder.filePath(QString::number(number) + ".key"));
    file.open(QIODevice::ReadOnly);
    return QSslKey(&file, QSsl::Ec);
  }

  QString certificate(int number) const { return folder.filePath(QString::number(number) + ".pem"); }

  QTemporaryDir folder;
};

const Authority& authority() {
  static const Authority instance;
  return instance;
}

class Access : public QNetworkAccessManager {
 protected:
  QNetworkReply* createRequest(Operation operation, const QNetworkRequest& original,
                               QIODevice* data) override {
    QNetworkRequest request = original;
    QSslConfiguration configuration = request.sslConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(authority().folder.filePath("authority.pem")));
    request.setSslConfiguration(configuration);
    return QNetworkAccessManager::createRequest(operation, request, data);
  }
};

}  // namespace

WebSite::WebSite() : network_(std::make_unique<Access>()) {
  EXPECT_TRUE(listen(QHostAddress::LocalHost));
  network_->setProxy(QNetworkProxy(QNetworkProxy::HttpProxy, "127.0.0.1", serverPort()));
}

QByteArray WebSite::answer(const QByteArray& body, const QByteArray& status) {
  return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

void WebSite::incomingConnection(qintptr handle) {
  auto* socket = new QSslSocket(this);
  socket->setSocketDescriptor(handle);
  connect(socket, &QSslSocket::readyRead, this, [this, socket] { read(*socket); });
  connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
}

void WebSite::read(QSslSocket& socket) {
  const QByteArray request = socket.peek(1 << 16);
  if (!request.endsWith("\r\n\r\n")) return;
  socket.readAll();
  const QByteArray target = request.split(' ').at(1);
  if (request.startsWith("CONNECT")) {
    tunnels.push_back(target);
    socket.setProperty("host", target.split(':').front());
    socket.setLocalCertificateChain(
        QSslCertificate::fromPath(authority().certificate(static_cast<int>(identity))));
    socket.setPrivateKey(authority().key(static_cast<int>(identity)));
    socket.write("HTTP/1.1 200 Connected\r\n\r\n");
    socket.startServerEncryption();
    return;
  }
  requests.push_back(request);
  const auto found = answers_.find(socket.property("host").toByteArray() + target);
  socket.write(found == answers_.end() ? answer("no such page", "404 Not Found") : found->second);
  if (holdsConnections) {
    held_.emplace_back(&socket);
  } else {
    socket.disconnectFromHost();
  }
}

void WebSite::sendMore(const QByteArray& bytes) {
  for (const auto& socket : held_)
    if (socket) socket->write(bytes);
}

void WebSite::hangUp() {
  for (const auto& socket : std::exchange(held_, {}))
    if (socket) socket->disconnectFromHost();
}

}  // namespace velicor::test
