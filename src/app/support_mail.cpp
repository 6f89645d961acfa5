#include "app/support_mail.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include "app/running_version.h"
#include "platform/base/operating_system.h"
#include "platform/base/product.h"
#include "platform/log/log.h"

namespace velicor {

namespace {

constexpr std::string_view recipient = "support";  // at the product's site

std::string encoded(const std::string& text) {
  return QUrl::toPercentEncoding(QString::fromStdString(text)).toStdString();
}

}  // namespace

std::string SupportMail::address(std::string_view version, std::string_view operatingSystem) {
  const std::string name(product::name);
  const std::string subject = name + " Support";
  const std::string body =
      "\n\n—\n" + name + " " + std::string(version) + " · macOS " + std::string(operatingSystem);
  return "mailto:" + std::string(recipient) + "@" + std::string(product::siteHost) + "?subject=" + encoded(subject) +
         "&body=" + encoded(body);
}

void SupportMail::compose(desktop::Opener& opener) {
  const Status opened = opener.openUrl(address(runningVersion(), operatingSystem().name));
  if (!opened) log::general("no mail program took the support message: " + opened.error().description);
}

}  // namespace velicor
