// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_document.h"

#include "codetrace/render/ct_fields_json.h"
#include "codetrace/render/ct_node_text.h"
#include "codetrace/tree/ct_fields.h"

namespace CT {

namespace {

template <class List>
void write_entities(JsonWriter& json, std::string_view key, const List& entities) {
  json.key(key);
  json.begin_array();
  for (const auto& entity : entities) {
    if (!json.ok()) break;
    json.element();
    write_json(entity, json);
  }
  json.end_array();
}

void tell(const NodeCounter& count, Storage::NodeId id) {
  constexpr Storage::NodeId now_and_then = 1024;
  if (id % now_and_then == 0 && count) count(id);
}

void write_nodes(JsonWriter& json, const Storage& storage, const NodeCounter& count) {
  NodeReader reader(storage);
  Fields fields;
  ValueRoom values;
  JsonRoom room;
  json.key("cp");
  json.begin_array();
  for (Storage::NodeId id = 0; id != storage.node_count() && json.ok(); ++id) {
    tell(count, id);
    const Node::Base& node = reader.read(id);
    fields.clear();
    if (!node.is_complete()) fields.set(FieldName::incomplete, true);
    node.collect(fields, values);
    json.element();
    write_json(fields, json, &room);
  }
  json.end_array();
}

}  // namespace

void write_text(const Storage& storage, Writer& out, const NodeCounter& count) {
  NodeReader reader(storage);
  Node::TextRoom room;
  Outline outline;
  for (Storage::NodeId id = 0; id != storage.node_count() && out.ok(); ++id) {
    tell(count, id);
    const Node::Base& node = reader.read(id);
    const std::size_t depth = outline.place(id, node.parent_id());
    out.fill(' ', 2 * depth);
    if (!node.is_complete()) out.put("? ");
    // Every node that a storage makes has a line.
    node.write_text(out, room);
    out.put('\n');
  }
}

void write_json(const Storage& storage, Writer& out, const NodeCounter& count) {
  JsonWriter json(out);
  json.begin_object();
  write_entities(json, "cl", storage.class_entries());
  write_nodes(json, storage, count);
  write_entities(json, "fn", storage.functions());
  json.end_object();
  out.put("\n\n");
}

std::size_t Outline::place(std::int32_t id, std::int32_t parent_id) {
  if (parent_id >= 0) {
    while (!ancestors_.empty() && ancestors_.back() != parent_id) ancestors_.pop_back();
  }
  ancestors_.push_back(id);
  return ancestors_.size() - 1;
}

}  // namespace CT
