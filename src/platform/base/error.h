#pragma once

#include <string>
#include <string_view>

#include <tl/expected.hpp>

namespace velicor {

// A failure that one subsystem reports to another: which family of errors it belongs to, the number within
// that family, and one sentence that can be shown to the user. Errors are values here; nothing throws across
// a subsystem's border.
struct Error {
  std::string domain;
  int code = 0;
  std::string description;

  friend bool operator==(const Error&, const Error&) = default;
};

template <typename T>
using Result = tl::expected<T, Error>;

// Success without a value.
using Status = tl::expected<void, Error>;

tl::unexpected<Error> failure(std::string_view domain, int code, std::string_view description);

}  // namespace velicor
