#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <QByteArray>

#include "platform/base/error.h"
#include "platform/base/operating_system.h"
#include "update/written_url.h"

namespace velicor {

// The entry of the update feed: one release of the product. Texts are UTF-8, from outside, and shown to the
// user as plain text.
struct Release {
  std::string version;  // for people; never compared
  std::int64_t build = 0;
  WrittenUrl url;                                   // where the disk image is
  std::optional<std::vector<std::string>> notes;    // one line each
  std::optional<std::string> minimumSystemVersion;  // such as "13.0"; none: runs everywhere

  // Whether the disk image is on our own site: the URL as written begins with "https" and names an allowed
  // host, both spelled exactly, and a connection to it goes to that very host. Path, query, port and user
  // don't count.
  bool isTrusted() const;

  // Whether this system, or another, meets minimumSystemVersion.
  bool runsHere() const { return runsOn(operatingSystem()); }
  bool runsOn(const OperatingSystem& system) const;

  // "Velicor-VERSION.dmg"; none where the version can't be a piece of a file name: it has over 64 characters,
  // a slash of either kind or a character that is not printable, or nothing but dots.
  std::optional<std::string> imageName() const;

  friend bool operator==(const Release&, const Release&) = default;
};

// The feed's document: a JSON object with the members "version", "build" and "url", and perhaps "notes" and
// "minimumSystemVersion" (null: not there). Others don't matter. Any member of another type, integers with a
// fraction or beyond 64 bits among them, fails the document as a whole.
Result<Release> decodeRelease(const QByteArray& document);

}  // namespace velicor
