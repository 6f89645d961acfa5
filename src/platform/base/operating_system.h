#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velicor {

struct SystemVersion {
  std::int64_t major = 0;
  std::int64_t minor = 0;
  std::int64_t patch = 0;
  friend auto operator<=>(const SystemVersion&, const SystemVersion&) = default;
};

// The whole text as a decimal number with an optional sign; none for anything else, such as blanks around it
// or a number that 64 bits don't hold.
std::optional<std::int64_t> wholeNumber(std::string_view text);

// "13", "12.6.1": the first three of the pieces between dots, empty pieces not counted. A piece that is no
// whole number counts as 0, and so does a missing one.
SystemVersion dottedVersion(std::string_view text);

// What the running system says of itself.
struct OperatingSystem {
  std::string name = "Linux";            // for people, such as "Debian GNU/Linux 12 (bookworm)"
  std::optional<SystemVersion> version;  // none where releases have no numbers

  // A system without version numbers is always up to date: it meets every minimum.
  bool isAtLeast(const SystemVersion& minimum) const { return !version || *version >= minimum; }

  friend bool operator==(const OperatingSystem&, const OperatingSystem&) = default;
};

// The content of an os-release file: lines KEY=VALUE, the value quoted the way the shell does it.
OperatingSystem parseOsRelease(std::string_view content);

// From /etc/os-release, else /usr/lib/os-release; read once. Any thread.
const OperatingSystem& operatingSystem();

}  // namespace velicor
