// SPDX-License-Identifier: MIT
#include "plain_value.h"

#include <QJsonArray>
#include <QJsonObject>
#include <algorithm>
#include <bit>

namespace CT::Test {

namespace {

enum Type { undef, null, no, yes, integer, real_number, string, array, object, resource };

QString decoded(const std::string& bytes) {
  return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

bool is_cut_string(const PlainValue& value) {
  return value.orig_sz >= 0 && static_cast<std::size_t>(value.orig_sz) > value.text.size();
}

bool is_marker(const PlainValue& value) {
  return value.type == string && decoded(value.text) == QStringLiteral("**CUT**");
}

QString array_text(const PlainValue& value) {
  QString text = QStringLiteral("array(");
  QString comma;
  for (const auto& [key, element] : value.pairs) {
    text += QStringLiteral("%1%2 => %3").arg(comma, key.to_string(true), element.to_string(true));
    comma = QStringLiteral(", ");
  }
  if (value.is_cut) text += comma + QStringLiteral("...");
  return text + QStringLiteral(")");
}

QJsonValue string_json(const PlainValue& value) {
  if (value.orig_sz < 0) return decoded(value.text);
  QJsonObject object{{QStringLiteral("string"), decoded(value.text)}};
  if (is_cut_string(value)) object[QStringLiteral("orig_sz")] = value.orig_sz;
  return object;
}

QJsonValue array_json(const PlainValue& value) {
  QJsonArray list;
  QJsonObject map;
  for (const auto& [key, element] : value.pairs) {
    const QJsonValue json = element.as_json();
    list.append(json);
    map.insert(key.to_string(true), json);
  }
  QJsonObject object;
  if (value.is_cut) object[QStringLiteral("cut")] = true;
  object[QStringLiteral("array")] = value.is_list ? QJsonValue(list) : QJsonValue(map);
  return object;
}

}  // namespace

QString PlainValue::to_string(bool quoted) const {
  const QString quote = quoted ? QStringLiteral("\"") : QString();
  const QString marker = is_cut_string(*this) ? QStringLiteral("**CUT**") : QString();
  switch (type) {
    case null: return QStringLiteral("null");
    case no: return QStringLiteral("false");
    case yes: return QStringLiteral("true");
    case integer: return QString::number(number);
    case real_number: return QString::number(real, 'g', 6);
    case string: return quote + decoded(text) + marker + quote;
    case array: return array_text(*this);
    case object:
      return QStringLiteral("object(%1#%2)")
          .arg(class_id ? decoded(text) : QStringLiteral("!unknown!"), QString::number(number));
    case resource:
      return QStringLiteral("resource(%1#%2)").arg(decoded(text), QString::number(number));
    default: return QStringLiteral("undef");
  }
}

QJsonValue PlainValue::as_json() const {
  const auto handle = static_cast<qint64>(number);
  QJsonObject result{{QStringLiteral("handle"), handle}};
  switch (type) {
    case null: return QJsonValue::Null;
    case no: return false;
    case yes: return true;
    case integer: return handle;
    case real_number: return real;
    case string: return string_json(*this);
    case array: return array_json(*this);
    case object:
      if (class_id) result[QStringLiteral("class")] = static_cast<qint64>(*class_id);
      return result;
    case resource: result[QStringLiteral("resource")] = decoded(text); return result;
    default: return QJsonValue::Undefined;
  }
}

PlainValue PlainReader::read() {
  PlainValue value;
  const auto code = static_cast<int>(number(1));
  if (code <= resource) value.type = code;
  switch (value.type) {
    case integer: value.number = static_cast<std::int64_t>(number(8)); break;
    case real_number: value.real = std::bit_cast<double>(number(8)); break;
    case string: read_string(value); break;
    case array:
      value.count = static_cast<std::int32_t>(number(4));
      if (ok_) {
        read_array(value);
        return value;
      }
      break;
    case object: read_object(value); break;
    case resource:
      value.text = name(number(8));
      value.number = static_cast<std::int64_t>(number(8));
      break;
    default: break;
  }
  return ok_ ? value : PlainValue();
}

void PlainReader::read_string(PlainValue& value) {
  const auto word = static_cast<std::int32_t>(number(4));
  const std::uint64_t size = word < 0 ? number(4) : static_cast<std::uint64_t>(word);
  value.text = take(size);
  value.orig_sz = word < 0 ? static_cast<std::int32_t>(-std::int64_t{word}) : word;
}

void PlainReader::read_array(PlainValue& value) {
  value.is_list = true;
  for (std::int32_t i = 0; i < value.count && ok_; ++i) {
    const PlainValue key = read();
    if (!ok_) return;
    PlainValue element = read();
    value.is_cut = value.is_cut || is_marker(key);
    if (value.is_cut) continue;
    const auto index = static_cast<std::int64_t>(value.pairs.size());
    if (key.type != integer || key.number != index) value.is_list = false;
    if (is_marker(element)) {
      element = PlainValue();
      element.type = array;
      element.is_cut = element.is_list = true;
    }
    value.pairs.push_back({key, element});
  }
}

void PlainReader::read_object(PlainValue& value) {
  const Ref ref = number(8);
  value.number = static_cast<std::int64_t>(number(4));
  if (!ok_ || !names_.contains(ref)) return;
  value.text = name(ref);
  auto known = std::find(classes_.begin(), classes_.end(), ref);
  if (known == classes_.end()) known = classes_.insert(known, ref);
  value.class_id = static_cast<std::size_t>(known - classes_.begin());
}

std::string PlainReader::name(Ref ref) const {
  const auto known = names_.find(ref);
  return known != names_.end() ? known->second : std::string();
}

std::string_view PlainReader::take(std::size_t size) {
  if (!ok_ || size > bytes_.size() - at_) {
    ok_ = false;
    return {};
  }
  at_ += size;
  return bytes_.substr(at_ - size, size);
}

std::uint64_t PlainReader::number(std::size_t width) {
  std::uint64_t result = 0;
  std::size_t i = 0;
  for (const char c : take(width)) {
    const auto byte = std::uint64_t{static_cast<unsigned char>(c)};
    const std::size_t place = order_ == ByteOrder::big ? width - 1 - i : i;
    result |= byte << (8 * place);
    ++i;
  }
  return result;
}

}  // namespace CT::Test
