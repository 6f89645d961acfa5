// The update feed's document.
#include <utility>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "update/release.h"

namespace velicor {

namespace {

constexpr int notDecodable = 1;

tl::unexpected<Error> malformed(const std::string& what) {
  return failure("velicor.feed", notDecodable, "the update feed can't be read: " + what);
}

bool isAbsent(const QJsonValue& value) { return value.isUndefined() || value.isNull(); }

std::optional<std::string> text(const QJsonValue& value) {
  return value.isString() ? std::optional(value.toString().toStdString()) : std::nullopt;
}

// The library gives its fallback back for what is no integer within 64 bits.
std::optional<std::int64_t> integer(const QJsonValue& value) {
  if (!value.isDouble() || value.toInteger(0) != value.toInteger(1)) return std::nullopt;
  return value.toInteger();
}

std::optional<std::vector<std::string>> lines(const QJsonValue& value) {
  if (!value.isArray()) return std::nullopt;
  std::vector<std::string> all;
  for (const QJsonValue element : value.toArray()) {
    auto line = text(element);
    if (!line) return std::nullopt;
    all.push_back(std::move(*line));
  }
  return all;
}

std::optional<WrittenUrl> address(const QJsonValue& value) {
  const auto written = text(value);
  return written ? WrittenUrl::parse(*written) : std::nullopt;
}

}  // namespace

Result<Release> decodeRelease(const QByteArray& document) {
  QJsonParseError error;
  const QJsonDocument json = QJsonDocument::fromJson(document, &error);
  if (error.error != QJsonParseError::NoError) return malformed(error.errorString().toStdString());
  if (!json.isObject()) return malformed("not an object");
  const QJsonObject object = json.object();

  auto version = text(object["version"]);
  if (!version) return malformed("\"version\" is not a string");
  const auto build = integer(object["build"]);
  if (!build) return malformed("\"build\" is not an integer");
  auto url = address(object["url"]);
  if (!url) return malformed("\"url\" is not a URL");
  auto notes = lines(object["notes"]);
  if (!notes && !isAbsent(object["notes"])) return malformed("\"notes\" is not an array of strings");
  auto minimum = text(object["minimumSystemVersion"]);
  if (!minimum && !isAbsent(object["minimumSystemVersion"])) {
    return malformed("\"minimumSystemVersion\" is not a string");
  }
  return Release{std::move(*version), *build, std::move(*url), std::move(notes), std::move(minimum)};
}

}  // namespace velicor
