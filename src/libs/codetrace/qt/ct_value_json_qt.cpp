// SPDX-License-Identifier: MIT
//
// Values as Qt's JSON classes, built bottom-up with an explicit stack.
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include "codetrace/render/ct_text.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/render/ct_value_text.h"

namespace CT::Checkpoint {

namespace {

QJsonValue leaf(const ValueTape& tape, ValueTape::Index i) {
  QJsonObject object;
  switch (tape.type(i)) {
    case ValueType::undef: return QJsonValue::Undefined;
    case ValueType::null: return QJsonValue::Null;
    case ValueType::false_: return false;
    case ValueType::true_: return true;
    case ValueType::long_: return static_cast<qint64>(tape.as_long(i));
    case ValueType::double_: return tape.as_double(i);
    case ValueType::string: return tape.string(i).as_json();
    case ValueType::object:
      object.insert(QStringLiteral("handle"), static_cast<qint64>(tape.object_handle(i)));
      if (const auto entry = tape.class_entry(i); entry != nullptr) {
        object.insert(QStringLiteral("class"),
                      entry->id() >= 0 ? QJsonValue(entry->id()) : QJsonValue(entry->as_json()));
      }
      return object;
    case ValueType::resource:
      object.insert(QStringLiteral("resource"), tape.resource_name(i).as_json());
      object.insert(QStringLiteral("handle"), static_cast<qint64>(tape.resource_handle(i)));
      return object;
    case ValueType::array: break;
  }
  return QJsonValue::Undefined;
}

struct OpenArray {
  ValueTape::Index item;
  ValueTape::Index at;  // the item of the next key
  QString key;          // of the member that is being built
  QJsonArray list;
  QJsonObject map;
};

QJsonValue closed(const ValueTape& tape, const OpenArray& array) {
  QJsonObject object;
  if (tape.is_cut(array.item)) object.insert(QStringLiteral("cut"), true);
  object.insert(QStringLiteral("array"),
                tape.is_list(array.item) ? QJsonValue(array.list) : QJsonValue(array.map));
  return object;
}

QString key_of(const ValueTape& tape, ValueTape::Index key) {
  MemoryWriter text;
  ValueTextWriter().write(tape, key, text);
  return to_qstring(text.view());
}

}  // namespace

QJsonValue to_qt_json(const ValueTape& tape, ValueTape::Index root) {
  if (tape.type(root) != ValueType::array) return leaf(tape, root);
  std::vector<OpenArray> open;
  open.push_back({root, root + 1, {}, {}, {}});
  while (true) {
    OpenArray& array = open.back();
    QJsonValue done;
    if (array.at != tape.end(array.item)) {
      const ValueTape::Index value = tape.end(array.at);
      if (!tape.is_list(array.item)) array.key = key_of(tape, array.at);
      array.at = tape.end(value);
      if (tape.type(value) == ValueType::array) {
        if (open.size() == qt_json_levels) return QJsonValue::Undefined;
        open.push_back({value, value + 1, {}, {}, {}});
        continue;
      }
      done = leaf(tape, value);
    } else {
      done = closed(tape, array);
      open.pop_back();
      if (open.empty()) return done;
    }
    OpenArray& parent = open.back();
    tape.is_list(parent.item) ? parent.list.append(done)
                              : static_cast<void>(parent.map.insert(parent.key, done));
  }
}

QJsonValue ValuePart::to_qt_json() const { return Checkpoint::to_qt_json(*tape_, value_); }

QJsonValue ValueListPart::to_qt_json() const {
  QJsonArray list;
  for (ValueTape::Index i = 0; i != tape_->size(); i = tape_->end(i)) {
    list.append(Checkpoint::to_qt_json(*tape_, i));
  }
  return list;
}

}  // namespace CT::Checkpoint
