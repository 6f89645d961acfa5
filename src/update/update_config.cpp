#include "update/update_config.h"

#include <algorithm>

#include "platform/base/product.h"

namespace velicor::UpdateConfig {

namespace {

const std::string& host() {
  static const std::string name(product::siteHost);
  return name;
}

QUrl onSite(const char* path) { return QUrl(QString::fromStdString("https://" + host() + path)); }

}  // namespace

const QUrl& feed() {
  static const QUrl url = onSite("/appcast.json");
  return url;
}

const QUrl& page() {
  static const QUrl url = onSite("");
  return url;
}

const std::array<std::string, 2>& allowedHosts() {
  static const std::array<std::string, 2> hosts{host(), "www." + host()};
  return hosts;
}

bool reachesOurSite(const QUrl& url) {
  const std::string reached = url.host(QUrl::FullyEncoded).toStdString();
  return url.isValid() && url.scheme() == QLatin1String("https") &&
         std::ranges::find(allowedHosts(), reached) != allowedHosts().end();
}

}  // namespace velicor::UpdateConfig
