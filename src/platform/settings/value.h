#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <QJsonValue>

// What a setting can hold, and how it is written down. Every type has a written form of its own, so that a
// value is read back as exactly the type that was stored.
namespace velicor::settings {

struct Value;

using Date = std::chrono::system_clock::time_point;  // to the nanosecond
using List = std::vector<Value>;

// Strings are UTF-8.
struct Value : std::variant<bool, std::int64_t, double, std::string, Date, List> {
  using variant::variant;
  const variant& held() const { return *this; }
};

// Booleans, integers, strings and lists are written as what they are. JSON knows neither infinities nor the
// difference between 1 and 1.0, so doubles are written as {"double": "0.5"}, shortest text that reads back as
// the same number; dates as {"date": nanoseconds since 1970-01-01 UTC}.
QJsonValue encode(const Value& value);

// None for what encode() never writes (except that a number with a fraction passes as a double, for those
// who edit the file).
std::optional<Value> decode(const QJsonValue& json);

}  // namespace velicor::settings
