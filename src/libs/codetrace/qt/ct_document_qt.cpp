// SPDX-License-Identifier: MIT
//
// The JSON document as Qt's classes.
#include <QJsonArray>
#include <QJsonObject>

#include "codetrace/ct_storage.h"
#include "codetrace/qt/ct_value_qt.h"
#include "codetrace/render/ct_document.h"
#include "codetrace/tree/ct_fields.h"

namespace CT {

namespace {

template <class List>
QJsonArray as_array(const List& entities) {
  QJsonArray array;
  for (const auto& entity : entities) array.append(entity.as_json());
  return array;
}

}  // namespace

QJsonObject as_json(const Storage& storage) {
  NodeReader reader(storage);
  Fields fields;
  ValueRoom room;
  QJsonArray nodes;
  for (Storage::NodeId id = 0; id != storage.node_count(); ++id) {
    const Node::Base& node = reader.read(id);
    fields.clear();
    if (!node.is_complete()) fields.set(FieldName::incomplete, true);
    node.collect(fields, room);
    QJsonObject object;
    insert_into(object, fields);
    nodes.append(object);
  }
  QJsonObject document;
  document.insert(QStringLiteral("cp"), nodes);
  document.insert(QStringLiteral("fn"), as_array(storage.functions()));
  document.insert(QStringLiteral("cl"), as_array(storage.class_entries()));
  return document;
}

}  // namespace CT
