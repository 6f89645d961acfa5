#include "platform/settings/settings.h"

#include <utility>

#include "platform/log/log.h"
#include "platform/settings/settings_file.h"

namespace velicor::settings {

namespace {

constexpr std::chrono::milliseconds writeDelay{250};

QString toQt(std::string_view key) {
  return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

}  // namespace

Settings::Settings(std::filesystem::path file, dispatch::Clock& clock)
    : file_(std::move(file)),
      clock_(clock),
      content_(readOrSetAside(file_)),
      values_(valuesOf(content_)),
      life_(std::make_shared<Settings*>(this)) {}

Settings::~Settings() { flush(); }

std::optional<Value> Settings::value(std::string_view key) const { return decode(values_.value(toQt(key))); }

template <typename T>
std::optional<T> Settings::held(std::string_view key) const {
  const auto found = value(key);
  if (!found || !std::holds_alternative<T>(found->held())) return std::nullopt;
  return std::get<T>(found->held());
}

std::optional<bool> Settings::boolean(std::string_view key) const { return held<bool>(key); }
std::optional<std::int64_t> Settings::integer(std::string_view key) const { return held<std::int64_t>(key); }
std::optional<double> Settings::real(std::string_view key) const { return held<double>(key); }
std::optional<std::string> Settings::string(std::string_view key) const { return held<std::string>(key); }
std::optional<Date> Settings::date(std::string_view key) const { return held<Date>(key); }

std::optional<double> Settings::number(std::string_view key) const {
  if (const auto whole = integer(key)) return static_cast<double>(*whole);
  return real(key);
}

std::optional<std::vector<std::string>> Settings::stringList(std::string_view key) const {
  const auto list = held<List>(key);
  if (!list) return std::nullopt;
  std::vector<std::string> strings;
  for (const Value& element : *list) {
    const auto* const text = std::get_if<std::string>(&element.held());
    if (!text) return std::nullopt;
    strings.push_back(*text);
  }
  return strings;
}

void Settings::setBoolean(std::string_view key, bool value) { setValue(key, Value(value)); }
void Settings::setInteger(std::string_view key, std::int64_t value) { setValue(key, Value(value)); }
void Settings::setReal(std::string_view key, double value) { setValue(key, Value(value)); }
void Settings::setString(std::string_view key, std::string value) { setValue(key, Value(std::move(value))); }
void Settings::setDate(std::string_view key, Date value) { setValue(key, Value(value)); }

void Settings::setStringList(std::string_view key, const std::vector<std::string>& value) {
  setValue(key, Value(List(value.begin(), value.end())));
}

void Settings::setValue(std::string_view key, const Value& value) {
  const QJsonValue encoded = encode(value);
  const QString name = toQt(key);
  // Whoever saves everything at every change must not wear the disk. After a failure each call counts as a
  // change, so that it is tried again.
  if (values_.value(name) != encoded) {
    values_.insert(name, encoded);
    unwritten_.insert(name);
  }
  writeSoon();
}

void Settings::remove(std::string_view key) {
  const QString name = toQt(key);
  if (values_.contains(name)) {
    values_.remove(name);
    unwritten_.insert(name);
  }
  writeSoon();
}

void Settings::writeSoon() {
  if (unwritten_.empty()) return;
  if (std::exchange(writeScheduled_, true)) return;
  clock_.callAfter(writeDelay, [life = std::weak_ptr<Settings*>(life_)] {
    const auto settings = life.lock();
    if (!settings) return;
    (*settings)->writeScheduled_ = false;
    (*settings)->flush();
  });
}

QJsonObject Settings::toWrite() const {
  std::error_code ignored;  // where it can't be looked at, writing fails with the reason
  const bool isThere = std::filesystem::is_regular_file(file_, ignored);
  const QJsonObject present = isThere ? readOrSetAside(file_) : QJsonObject();
  if (present.isEmpty()) return withValues(content_, values_);
  QJsonObject values = valuesOf(present);
  for (const QString& key : unwritten_) {
    const QJsonValue value = values_.value(key);
    if (value.isUndefined()) {
      values.remove(key);
    } else {
      values.insert(key, value);
    }
  }
  return withValues(present, values);
}

void Settings::flush() {
  if (unwritten_.empty()) return;
  const Status written = write(file_, toWrite());
  if (written) unwritten_.clear();
  if (!written && !failureLogged_)
    log::Logger("settings").error("settings not saved: " + written.error().description);
  failureLogged_ = !written;
}

}  // namespace velicor::settings
