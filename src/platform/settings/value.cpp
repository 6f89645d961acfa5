#include "platform/settings/value.h"

#include <array>
#include <charconv>

#include <QJsonArray>
#include <QJsonObject>
#include <QMetaType>
#include <QString>
#include <QVariant>

namespace velicor::settings {

namespace {

constexpr auto doubleTag = "double";
constexpr auto dateTag = "date";

QJsonObject tagged(const char* tag, const QJsonValue& content) {
  QJsonObject object;
  object.insert(QLatin1String(tag), content);
  return object;
}

struct Encoder {
  QJsonValue operator()(bool value) const { return value; }
  QJsonValue operator()(std::int64_t value) const { return static_cast<qint64>(value); }
  QJsonValue operator()(const std::string& value) const { return QString::fromStdString(value); }

  QJsonValue operator()(double value) const {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return tagged(doubleTag, QString::fromLatin1(text.data(), end - text.data()));
  }

  QJsonValue operator()(const Date& value) const {
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::nanoseconds>(value.time_since_epoch());
    return tagged(dateTag, static_cast<qint64>(sinceEpoch.count()));
  }

  QJsonValue operator()(const List& value) const {
    QJsonArray array;
    for (const Value& element : value)
      array.append(encode(element));
    return array;
  }
};

std::optional<std::int64_t> integerOf(const QJsonValue& json) {
  const QVariant variant = json.toVariant();
  if (variant.typeId() != QMetaType::LongLong) return std::nullopt;
  return variant.toLongLong();
}

std::optional<Value> decodeNumber(const QJsonValue& json) {
  if (const auto integer = integerOf(json)) return Value(*integer);
  return Value(json.toDouble());
}

std::optional<Value> decodeDouble(const QString& written) {
  const std::string text = written.toStdString();
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return Value(number);
}

std::optional<Value> decodeTagged(const QJsonObject& object) {
  if (object.size() != 1) return std::nullopt;
  const QJsonValue content = object.begin().value();
  if (object.begin().key() == QLatin1String(doubleTag) && content.isString()) {
    return decodeDouble(content.toString());
  }
  if (object.begin().key() == QLatin1String(dateTag)) {
    if (const auto sinceEpoch = integerOf(content)) return Value(Date(std::chrono::nanoseconds(*sinceEpoch)));
  }
  return std::nullopt;
}

std::optional<Value> decodeList(const QJsonArray& array) {
  List list;
  for (const auto element : array) {
    auto decoded = decode(element);
    if (!decoded) return std::nullopt;
    list.push_back(std::move(*decoded));
  }
  return Value(std::move(list));
}

}  // namespace

QJsonValue encode(const Value& value) { return std::visit(Encoder{}, value.held()); }

std::optional<Value> decode(const QJsonValue& json) {
  switch (json.type()) {
    case QJsonValue::Bool:
      return Value(json.toBool());
    case QJsonValue::Double:
      return decodeNumber(json);
    case QJsonValue::String:
      return Value(json.toString().toStdString());
    case QJsonValue::Array:
      return decodeList(json.toArray());
    case QJsonValue::Object:
      return decodeTagged(json.toObject());
    case QJsonValue::Null:
    case QJsonValue::Undefined:
      break;
  }
  return std::nullopt;
}

}  // namespace velicor::settings
