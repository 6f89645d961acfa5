#include "platform/settings/settings_file.h"

#include <string>
#include <system_error>

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

#include "platform/log/log.h"

namespace velicor::settings {

namespace {

constexpr std::string_view errorDomain = "velicor.settings";
constexpr auto formatMember = "format";
constexpr auto formatName = "velicor-settings";
constexpr auto valuesMember = "values";

// No collection of settings comes near this; what is larger is some other file.
constexpr qint64 largestFile = 1 << 20;

QString toQt(const std::filesystem::path& path) { return QString::fromStdString(path.string()); }

tl::unexpected<Error> unreadable(const QString& reason) {
  return failure(errorDomain, 1, reason.toStdString());
}

Result<QByteArray> readAll(const std::filesystem::path& path) {
  // Opening a pipe or a device could block for ever.
  if (!QFileInfo(toQt(path)).isFile()) return unreadable("not a regular file");
  QFile file(toQt(path));
  if (!file.open(QIODevice::ReadOnly)) return unreadable(file.errorString());
  if (file.size() > largestFile) return unreadable("too large");
  QByteArray bytes = file.readAll();
  if (file.error() != QFile::NoError) return unreadable(file.errorString());
  return bytes;
}

std::filesystem::path freeNameBeside(const std::filesystem::path& file) {
  for (int number = 1;; ++number) {
    std::filesystem::path name = file;
    name += ".broken-" + std::to_string(number);
    std::error_code ignored;  // a name that can't be looked at is as good as free: the renaming then fails
    if (!std::filesystem::exists(std::filesystem::symlink_status(name, ignored))) return name;
  }
}

void setAside(const std::filesystem::path& file, const std::string& reason) {
  const std::filesystem::path aside = freeNameBeside(file);
  std::error_code error;
  std::filesystem::rename(file, aside, error);
  const std::string outcome =
      error ? "could not be set aside (" + error.message() + ")" : "set aside as " + aside.string();
  log::Logger("settings")
      .error(file.string() + " can't be read (" + reason + "), " + outcome + "; its values are not used");
}

}  // namespace

std::filesystem::path userFile() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return std::filesystem::path(folder.toStdString()) / "velicor" / "settings.json";
}

Result<QJsonObject> contentFrom(const QByteArray& bytes) {
  QJsonParseError error;
  QJsonObject content = QJsonDocument::fromJson(bytes, &error).object();
  if (error.error != QJsonParseError::NoError) return unreadable(error.errorString());
  if (content.value(QLatin1String(formatMember)) != QJsonValue(QLatin1String(formatName)) ||
      !content.value(QLatin1String(valuesMember)).isObject()) {
    return unreadable("not a settings file of this program");
  }
  return content;
}

QJsonObject readOrSetAside(const std::filesystem::path& file) {
  std::error_code ignored;
  if (std::filesystem::status(file, ignored).type() == std::filesystem::file_type::not_found) return {};
  const auto content = readAll(file).and_then(contentFrom);
  if (content) return *content;
  setAside(file, content.error().description);
  return {};
}

Status write(const std::filesystem::path& file, const QJsonObject& content) {
  std::error_code error;
  const std::filesystem::path folder = file.parent_path();
  if (std::filesystem::create_directories(folder, error)) {
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
  }
  if (error) return failure(errorDomain, error.value(), folder.string() + ": " + error.message());
  QSaveFile target(toQt(file));
  const QByteArray bytes = QJsonDocument(content).toJson();
  // commit() itself takes no notice of what the disk has no room for.
  const bool isWritten =
      target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size() && target.flush();
  if (!isWritten || !target.commit()) {
    return failure(errorDomain, target.error(), file.string() + ": " + target.errorString().toStdString());
  }
  return {};
}

QJsonObject valuesOf(const QJsonObject& content) {
  return content.value(QLatin1String(valuesMember)).toObject();
}

QJsonObject withValues(QJsonObject content, const QJsonObject& values) {
  content.insert(QLatin1String(formatMember), QLatin1String(formatName));
  content.insert(QLatin1String(valuesMember), values);
  return content;
}

}  // namespace velicor::settings
