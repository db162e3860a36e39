// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_document.h"

#include <QJsonArray>

namespace CT {

namespace {

void collect_node(const Node::Base& node, JsonMembers& members, Node::Workspace& work) {
  members.clear();
  if (!node.is_complete()) members.flag(Key::incomplete);
  node.collect(members, work);
}

template <class Entities>
void write_entities(JsonWriter& json, std::string_view key, const Entities& entities) {
  JsonMembers members;
  json.key(key);
  json.begin_array();
  for (const auto& entity : entities) {
    members.clear();
    entity->collect(members);
    json.element();
    members.write(json);
    if (!json.ok()) return;
  }
  json.end_array();
}

void tell(const NodeCounter& count, Storage::NodeId id) {
  constexpr Storage::NodeId now_and_then = 1024;
  if (id % now_and_then == 0 && count) count(id);
}

void write_nodes(JsonWriter& json, Storage& storage, const NodeCounter& count) {
  NodeReader reader(storage);
  Node::Workspace work;
  JsonMembers members;
  json.key("cp");
  json.begin_array();
  for (Storage::NodeId id = 0; id != storage.node_count() && json.ok(); ++id) {
    tell(count, id);
    collect_node(reader.read(id), members, work);
    json.element();
    members.write(json);
  }
  json.end_array();
}

template <class Entities>
QJsonArray as_array(const Entities& entities) {
  QJsonArray array;
  for (const auto& entity : entities) array.append(entity->as_json());
  return array;
}

}  // namespace

void write_text(Storage& storage, Writer& out, const NodeCounter& count) {
  NodeReader reader(storage);
  Node::Workspace work;
  Outline outline;
  for (Storage::NodeId id = 0; id != storage.node_count() && out.ok(); ++id) {
    tell(count, id);
    const Node::Base& node = reader.read(id);
    const std::size_t depth = outline.place(id, node.parent_id());
    out.fill(' ', 2 * depth);
    if (!node.is_complete()) out.put("? ");
    // Every node that a storage makes has a line.
    node.write_text(out, work);
    out.put('\n');
  }
}

void write_json(Storage& storage, Writer& out, const NodeCounter& count) {
  JsonWriter json(out);
  json.begin_object();
  write_entities(json, "cl", storage.class_entries());
  write_nodes(json, storage, count);
  write_entities(json, "fn", storage.functions());
  json.end_object();
  out.put("\n\n");
}

QJsonObject as_json(Storage& storage) {
  NodeReader reader(storage);
  Node::Workspace work;
  JsonMembers members;
  QJsonArray nodes;
  for (Storage::NodeId id = 0; id != storage.node_count(); ++id) {
    collect_node(reader.read(id), members, work);
    nodes.append(members.as_json());
  }
  QJsonObject document;
  document.insert(QStringLiteral("cp"), nodes);
  document.insert(QStringLiteral("fn"), as_array(storage.functions()));
  document.insert(QStringLiteral("cl"), as_array(storage.class_entries()));
  return document;
}

std::size_t Outline::place(std::int32_t id, std::int32_t parent_id) {
  if (parent_id >= 0) {
    while (!ancestors_.empty() && ancestors_.back() != parent_id) ancestors_.pop_back();
  }
  ancestors_.push_back(id);
  return ancestors_.size() - 1;
}

}  // namespace CT
