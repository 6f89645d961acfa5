// Feeds of every shape. The first byte says which part of a feed the rest is, so that each rule is reached
// without the mutations having to survive the document's syntax.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include <QJsonDocument>
#include <QJsonObject>

#include "demand.h"
#include "update/release.h"
#include "update/update_config.h"

namespace {

using velicor::Release;
using velicor::fuzz::demand;

// Another reading of the text, as strict as can be: an allowed host right after the slashes or after the last
// "@" of what precedes the first delimiter, followed by nothing but a port.
bool looksLikeOurSite(const std::string& url) {
  constexpr std::string_view start = "https://";
  if (!url.starts_with(start)) return false;
  std::string_view authority = std::string_view(url).substr(start.size());
  authority = authority.substr(0, authority.find_first_of("/?#"));
  if (const auto at = authority.rfind('@'); at != authority.npos) authority.remove_prefix(at + 1);
  for (const std::string& host : velicor::UpdateConfig::allowedHosts()) {
    if (!authority.starts_with(host)) continue;
    const std::string_view rest = authority.substr(host.size());
    if (rest.empty() || (rest.front() == ':' && rest.find_first_not_of("0123456789", 1) == rest.npos)) return true;
  }
  return false;
}

void checkTrust(const Release& release) {
  const std::string written = release.url.absoluteString();
  for (const char c : written)
    demand(c > ' ' && c <= '~', "the absolute string is printable");
  const QUrl& reached = release.url.url();
  demand(reached.isValid(), "what was decoded is a URL");
  if (!release.isTrusted()) return;
  demand(looksLikeOurSite(written), "a trusted URL is written as one of our site");
  demand(velicor::UpdateConfig::reachesOurSite(reached), "a trusted URL leads to our site");
  // The library hands its own spelling on, to the connection and to redirections: it must mean the same.
  demand(QUrl(QString::fromLatin1(reached.toEncoded()), QUrl::StrictMode).host() == reached.host(),
         "the host survives the way to the network");
}

void checkName(const Release& release) {
  const auto name = release.imageName();
  if (!name) return;
  const std::filesystem::path folder = "/caches/Updates";
  const std::filesystem::path place = (folder / *name).lexically_normal();
  demand(place.parent_path() == folder && place.filename() == *name, "the image stays in its folder");
  demand(name->find('\0') == name->npos, "no name is cut short");
}

void checkSystem(const Release& release) {
  velicor::OperatingSystem system;
  demand(release.runsOn(system), "a system without numbers meets every minimum");
  if (!release.minimumSystemVersion) return;
  system.version = velicor::dottedVersion(*release.minimumSystemVersion);
  demand(release.runsOn(system), "a version meets itself");
}

QByteArray documentOf(char part, std::string_view rest) {
  const auto text = QString::fromUtf8(rest.data(), static_cast<qsizetype>(rest.size()));
  QJsonObject entry{{"version", "1.3"}, {"build", 2}, {"url", "https://velicor.example/a"}};
  switch (part) {
    case 'u':
      entry["url"] = text;
      break;
    case 'v':
      entry["version"] = text;
      break;
    case 'm':
      entry["minimumSystemVersion"] = text;
      break;
    default:
      return {rest.data(), static_cast<qsizetype>(rest.size())};
  }
  return QJsonDocument(entry).toJson();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  velicor::parseOsRelease(input);
  const auto release = velicor::decodeRelease(documentOf(input.front(), input.substr(1)));
  if (!release) return 0;
  checkTrust(*release);
  checkName(*release);
  checkSystem(*release);
  return 0;
}
