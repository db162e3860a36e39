// SPDX-License-Identifier: MIT
//
// Texts, values, functions and nodes for programs that work with Qt's classes.
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QTextStream>

#include "codetrace/model/ct_records.h"
#include "codetrace/model/ct_value.h"
#include "codetrace/qt/ct_text_qt.h"
#include "codetrace/qt/ct_value_qt.h"
#include "codetrace/render/ct_node_text.h"
#include "codetrace/render/ct_value_text.h"
#include "codetrace/render/ct_writer.h"
#include "codetrace/tree/ct_fields.h"
#include "codetrace/tree/ct_node.h"

namespace CT {

namespace {

// What `write(writer)` writes.
template <class Write>
QString text_of(Write write) {
  MemoryWriter text;
  write(text);
  return to_qstring(text.view());
}

QJsonObject as_object(const Fields& fields) {
  QJsonObject object;
  insert_into(object, fields);
  return object;
}

}  // namespace

namespace Checkpoint {

QString String::to_string() const {
  return text_of([&](Writer& out) { write(out); });
}

QString String::to_escaped_string() const {
  return text_of([&](Writer& out) { write_escaped(out); });
}

QJsonValue String::as_json() const {
  if (orig_sz < 0) return to_string();
  QJsonObject object;
  if (is_cut()) object.insert(QStringLiteral("orig_sz"), orig_sz);
  object.insert(QStringLiteral("string"),
                QString::fromUtf8(view().data(), static_cast<qsizetype>(view().size())));
  return object;
}

QString Function::full_name() const {
  const QString own = name().to_string();
  return class_entry_ == nullptr ? own
                                 : class_entry_->name().to_string() + QStringLiteral("::") + own;
}

QJsonObject ClassEntry::as_json() const {
  Fields fields;
  collect(*this, fields);
  return as_object(fields);
}

QJsonObject Function::as_json() const {
  Fields fields;
  collect(*this, fields);
  return as_object(fields);
}

QTextStream& Base::dump(QTextStream& out) const {
  return out << text_of([&](Writer& text) { dump(text); });
}

QString ValueRef::to_string(bool quoted) const {
  const auto form = quoted ? ValueTextWriter::Form::quoted : ValueTextWriter::Form::bare;
  return text_of([&](Writer& out) { ValueTextWriter().write(*this, out, form); });
}

QString ValueRef::to_escaped_string(bool quoted) const {
  if (type() != ValueType::string) return to_string(true);
  const QString escaped = string().to_escaped_string();
  return quoted ? QLatin1Char('"') + escaped + QLatin1Char('"') : escaped;
}

QJsonValue KVal::as_json() const { return to_qt_json(ref()); }

}  // namespace Checkpoint

bool Node::Base::to_text(QString& text) const {
  TextRoom room;
  bool has_line = false;
  text += text_of([&](Writer& out) { has_line = write_text(out, room); });
  return has_line;
}

bool Node::Base::to_json(QJsonObject& object) const {
  Fields fields;
  ValueRoom room;
  collect(fields, room);
  insert_into(object, fields);
  return true;
}

}  // namespace CT
