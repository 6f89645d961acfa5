// Settings files of every content. The first byte says whether the rest goes through a real file too, which
// takes a hundred times as long.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>

#include "demand.h"
#include "platform/log/log.h"
#include "platform/settings/settings.h"
#include "platform/settings/settings_file.h"

namespace {

using namespace velicor::settings;
using velicor::fuzz::demand;

constexpr auto ownKey = "one of ours";

// Nothing is ever written but by a flush.
class StoppedClock : public velicor::dispatch::Clock {
 public:
  velicor::dispatch::Instant now() const override { return {}; }
  void callAfter(velicor::dispatch::Duration, velicor::dispatch::Job) override {}
};

void checkValues(const QJsonObject& values) {
  for (const QJsonValue& json : values) {
    const auto value = decode(json);
    if (!value) continue;
    const QJsonValue encoded = encode(*value);
    const auto again = decode(encoded);
    demand(again && again->held().index() == value->held().index(), "a value keeps its type");
    demand(encode(*again) == encoded, "a value survives being written");
  }
}

// The library takes one off the beginning of a text each time the text is converted.
bool hasByteOrderMark(const QByteArray& bytes) {
  return bytes.contains("\xef\xbb\xbf") || bytes.toLower().contains("feff");
}

void checkContent(const QByteArray& bytes) {
  const auto content = contentFrom(bytes);
  if (!content) return;
  checkValues(valuesOf(*content));
  if (hasByteOrderMark(bytes)) return;
  const QByteArray written = QJsonDocument(withValues(*content, valuesOf(*content))).toJson();
  const auto again = contentFrom(written);
  demand(again.has_value(), "what is written can be read");
  demand(*again == *content, "nothing is lost on the way through the file");
}

std::string bytesIn(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  demand(stream.is_open(), "the file is there");
  return {std::istreambuf_iterator<char>(stream), {}};
}

QJsonObject othersIn(QJsonObject content) {
  QJsonObject values = valuesOf(content);
  values.remove(QLatin1String(ownKey));
  return withValues(std::move(content), values);
}

// In memory where there is such a folder: whoever writes settings waits for the disk.
QString fileFolder() {
  const QString memory = QStringLiteral("/dev/shm");
  return (QDir(memory).exists() ? memory : QDir::tempPath()) + QStringLiteral("/velicor_settings_fuzzer-XXXXXX");
}

void checkFile(std::string_view bytes) {
  static const QTemporaryDir folder(fileFolder());
  const auto path = std::filesystem::path(folder.path().toStdString()) / "settings.json";
  std::ofstream(path, std::ios::binary) << bytes;
  const QByteArray raw(bytes.data(), static_cast<qsizetype>(bytes.size()));
  const auto before = contentFrom(raw);
  StoppedClock clock;
  {
    Settings settings(path, clock);
    settings.setInteger(ownKey, 7);
  }
  const auto after = contentFrom(QByteArray::fromStdString(bytesIn(path)));
  demand(after.has_value(), "what was written can be read");
  demand(hasByteOrderMark(raw) || othersIn(*after) == othersIn(before.value_or(QJsonObject())),
         "what others keep in the file stays");
  demand(Settings(path, clock).integer(ownKey) == 7, "what was set is read");
  std::filesystem::path aside = path;
  aside += ".broken-1";
  demand(std::filesystem::exists(aside) != before.has_value(), "a broken file is set aside, and no other");
  if (before) return;
  demand(bytesIn(aside) == bytes, "what is set aside is whole");
  std::filesystem::remove(aside);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto silent = velicor::log::setSink([](const velicor::log::Entry&) {});
  static_cast<void>(silent);
  if (size == 0) return 0;
  const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  checkContent(QByteArray(rest.data(), static_cast<qsizetype>(rest.size())));
  if (data[0] == 'f') checkFile(rest);
  return 0;
}
