#pragma once

#include <filesystem>
#include <optional>

#include <QByteArray>
#include <QJsonObject>

#include "platform/base/error.h"

// The settings as one JSON file: an object with the member "format" and the settings in "values". Members
// that are not known here are kept by whoever writes back what was read.
namespace velicor::settings {

// Where this user's settings belong: $XDG_CONFIG_HOME/velicor/settings.json, with ~/.config where the
// variable is not set or not absolute.
std::filesystem::path userFile();

// What these bytes of a file hold; an error where they are none of ours.
Result<QJsonObject> contentFrom(const QByteArray& bytes);

// The file's content; an empty object when there is none. A file that can't be read as ours is renamed to the
// first free "….broken-N" beside it, with a log line, and counts as none.
QJsonObject readOrSetAside(const std::filesystem::path& file);

// Replaces the file in one step, or leaves it as it is; makes missing folders, readable for the user alone.
Status write(const std::filesystem::path& file, const QJsonObject& content);

// The settings inside a file's content, and the content with these settings in it.
QJsonObject valuesOf(const QJsonObject& content);
QJsonObject withValues(QJsonObject content, const QJsonObject& values);

}  // namespace velicor::settings
