// SPDX-License-Identifier: MIT
//
// Built bottom-up with an explicit stack.
#include "codetrace/qt/ct_value_qt.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <vector>

#include "codetrace/qt/ct_text_qt.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/render/ct_value_text.h"
#include "codetrace/render/ct_writer.h"

namespace CT {

using Checkpoint::Elements;
using Checkpoint::ValueRef;
using Checkpoint::ValueType;

namespace {

// What is an object in JSON too, by way of its text.
QJsonObject parsed(const ValueRef& value) {
  MemoryWriter text;
  JsonWriter json(text, JsonWriter::Form::compact);
  Checkpoint::ValueJsonWriter().write(*value.tape(), value.item(), json);
  return QJsonDocument::fromJson(
             QByteArray(text.view().data(), static_cast<qsizetype>(text.size())))
      .object();
}

// Of no array.
QJsonValue leaf(const ValueRef& value) {
  if (value_type_info(value.type()).is_object_in_json) return parsed(value);
  switch (value.type()) {
    case ValueType::null: return QJsonValue::Null;
    case ValueType::false_: return false;
    case ValueType::true_: return true;
    case ValueType::long_: return static_cast<qint64>(value.as_long());
    case ValueType::double_: return value.as_double();
    case ValueType::string: return value.string().as_json();
    default: return QJsonValue::Undefined;
  }
}

struct OpenArray {
  explicit OpenArray(const ValueRef& value)
      : array(value), at(value.elements().begin()), end(value.elements().end()) {}

  ValueRef array;
  Elements::Iterator at;
  Elements::Iterator end;
  QString key;  // of the member that is being built
  QJsonArray list;
  QJsonObject map;
};

QJsonValue closed(const OpenArray& open) {
  QJsonObject object;
  if (open.array.is_cut()) object.insert(QStringLiteral("cut"), true);
  object.insert(QStringLiteral("array"),
                open.array.is_list() ? QJsonValue(open.list) : QJsonValue(open.map));
  return object;
}

QString key_of(const ValueRef& key) {
  MemoryWriter text;
  Checkpoint::ValueTextWriter().write(key, text);
  return to_qstring(text.view());
}

}  // namespace

QJsonValue to_qt_json(const ValueRef& root) {
  if (root.type() != ValueType::array) return leaf(root);
  std::vector<OpenArray> open;
  open.emplace_back(root);
  while (true) {
    OpenArray& array = open.back();
    QJsonValue done;
    if (array.at != array.end) {
      const auto [key, value] = *array.at++;
      if (!array.array.is_list()) array.key = key_of(key);
      if (value.type() == ValueType::array) {
        if (open.size() == qt_json_levels) return QJsonValue::Undefined;
        open.emplace_back(value);
        continue;
      }
      done = leaf(value);
    } else {
      done = closed(array);
      open.pop_back();
      if (open.empty()) return done;
    }
    OpenArray& parent = open.back();
    parent.array.is_list() ? parent.list.append(done)
                           : static_cast<void>(parent.map.insert(parent.key, done));
  }
}

namespace {

QString as_qstring(std::string_view ascii) {
  return QString::fromLatin1(ascii.data(), static_cast<qsizetype>(ascii.size()));
}

struct ToQt {
  QJsonValue operator()(bool value) const { return value; }
  QJsonValue operator()(std::int64_t value) const { return static_cast<qint64>(value); }
  QJsonValue operator()(double value) const { return value; }
  QJsonValue operator()(const Word& value) const { return as_qstring(value.text); }
  QJsonValue operator()(const Checkpoint::String& value) const { return value.as_json(); }
  QJsonValue operator()(const SharedText& value) const { return value.text().as_json(); }
  QJsonValue operator()(const KTime::Timestamp& value) const {
    MemoryWriter text;
    put_timestamp(text, value);
    return as_qstring(text.view());
  }
  QJsonValue operator()(const ValueRef& value) const { return to_qt_json(value); }
  QJsonValue operator()(const Checkpoint::Values& values) const {
    QJsonArray list;
    for (const ValueRef& value : values) list.append(to_qt_json(value));
    return list;
  }
  QJsonValue operator()(const Checkpoint::ClassEntry* value) const { return value->as_json(); }
};

}  // namespace

void insert_into(QJsonObject& object, const Fields& fields) {
  fields.for_each([&](FieldName name, const FieldValue& value) {
    object.insert(as_qstring(field_name(name)), std::visit(ToQt(), value));
  });
}

}  // namespace CT
