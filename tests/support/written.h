// SPDX-License-Identifier: MIT
//
// Small ways to see what the library writes, and what Qt would.
#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QString>
#include <string>
#include <string_view>

#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_writer.h"

namespace CT::Test {

// Everything that `write` puts into the writer it is called with.
template <class Write>
std::string written(Write write) {
  MemoryWriter out;
  write(out);
  return std::string(out.view());
}

// The same for JSON.
template <class Write>
std::string written_json(JsonWriter::Form form, Write write) {
  return written([&](Writer& out) {
    JsonWriter json(out, form);
    write(json);
  });
}

// As above, as the only element of an array, so that a value of any type can be compared with Qt.
template <class Write>
std::string written_element(JsonWriter::Form form, Write write) {
  return written_json(form, [&](JsonWriter& json) {
    json.begin_array();
    json.element();
    write(json);
    json.end_array();
    if (form == JsonWriter::Form::indented) json.out().put('\n');
  });
}

inline QJsonDocument::JsonFormat qt_form(JsonWriter::Form form) {
  return form == JsonWriter::Form::indented ? QJsonDocument::Indented : QJsonDocument::Compact;
}

// What Qt prints for an array of this one value.
inline std::string qt_element(JsonWriter::Form form, const QJsonValue& value) {
  QJsonArray array;
  array.append(value);
  return QJsonDocument(array).toJson(qt_form(form)).toStdString();
}

// Stored bytes as Qt decodes them.
inline QString qt_text(std::string_view stored) {
  return QString::fromUtf8(stored.data(), static_cast<qsizetype>(stored.size()));
}

}  // namespace CT::Test
