#include "update/release.h"

#include <algorithm>

#include <QList>
#include <QString>

#include "platform/base/product.h"
#include "update/update_config.h"

namespace velicor {

namespace {

constexpr qsizetype longestNamedVersion = 64;

bool isSlash(char32_t c) { return c == U'/' || c == U'\\'; }

}  // namespace

// The text alone would do if everybody read URLs alike; where the library reads another host out of it than
// we do, nobody is trusted.
bool Release::isTrusted() const {
  const std::string reached = url.url().host(QUrl::FullyEncoded).toStdString();
  return url.scheme() == "https" && url.host() == reached && UpdateConfig::reachesOurSite(url.url());
}

bool Release::runsOn(const OperatingSystem& system) const {
  return !minimumSystemVersion || system.isAtLeast(dottedVersion(*minimumSystemVersion));
}

std::optional<std::string> Release::imageName() const {
  const QList<uint> characters = QString::fromStdString(version).toUcs4();
  const bool plain = characters.size() <= longestNamedVersion &&
                     std::ranges::all_of(characters, [](uint c) { return QChar::isPrint(c) && !isSlash(c); });
  const bool onlyDots = std::ranges::all_of(characters, [](uint c) { return c == U'.'; });
  if (!plain || onlyDots) return std::nullopt;
  return std::string(product::name) + "-" + version + ".dmg";
}

}  // namespace velicor
