#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <QJsonObject>
#include <QString>

#include "platform/dispatch/clock.h"
#include "platform/settings/value.h"

namespace velicor::settings {

// The user's settings: values by key, in memory at once and on disk soon after. Main thread.
//
// Reading is strict: a key that is missing or holds another type than asked for gives none; nothing is
// converted but an integer by number(). Keys that nobody asks for, such as those of a newer version, are
// kept.
//
// Changes reach the disk together, 250 ms after the first of them. What another process has written meanwhile
// stays, but for the keys that were changed here. A failure to write is logged once, until writing works
// again; it is tried again with the next change and at flush().
class Settings {
 public:
  // Reads the file (see settings_file.h for what happens to one that can't be read). The clock must outlive
  // the settings.
  Settings(std::filesystem::path file, dispatch::Clock& clock);

  // Writes what is not written yet.
  ~Settings();
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;

  std::optional<bool> boolean(std::string_view key) const;
  std::optional<std::int64_t> integer(std::string_view key) const;
  std::optional<double> real(std::string_view key) const;    // a double, infinities and not-a-number included
  std::optional<double> number(std::string_view key) const;  // an integer or a double
  std::optional<std::string> string(std::string_view key) const;
  std::optional<Date> date(std::string_view key) const;
  std::optional<std::vector<std::string>> stringList(std::string_view key) const;  // strings in every place
  std::optional<Value> value(std::string_view key) const;

  void setBoolean(std::string_view key, bool value);
  void setInteger(std::string_view key, std::int64_t value);
  void setReal(std::string_view key, double value);
  void setString(std::string_view key, std::string value);
  void setDate(std::string_view key, Date value);
  void setStringList(std::string_view key, const std::vector<std::string>& value);
  void setValue(std::string_view key, const Value& value);

  void remove(std::string_view key);

  // Writes now what is not written yet: before the process ends, for whatever reason.
  void flush();

 private:
  template <typename T>
  std::optional<T> held(std::string_view key) const;
  void writeSoon();
  QJsonObject toWrite() const;

  const std::filesystem::path file_;
  dispatch::Clock& clock_;
  QJsonObject content_;  // the file as it was read; its values are out of date
  QJsonObject values_;
  std::set<QString> unwritten_;  // the keys that were changed, or removed
  bool writeScheduled_ = false;
  bool failureLogged_ = false;
  std::shared_ptr<Settings*> life_;  // what scheduled writes find the object by
};

}  // namespace velicor::settings
