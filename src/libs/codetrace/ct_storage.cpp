// SPDX-License-Identifier: MIT
#include "codetrace/ct_storage.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <type_traits>

namespace CT {

using Checkpoint::Role;
using Checkpoint::Type;
using Kind = Finding::Kind;

namespace {

// A finding about a record, noted together with the place of the call.
Finding finding(Kind kind, const Checkpoint::Base& record,
                const char* source_file = __builtin_FILE(), int source_line = __builtin_LINE()) {
  Finding made{kind};
  made.type = record.type();
  made.offset = record.offset();
  made.source_file = source_file;
  made.source_line = source_line;
  return made;
}

}  // namespace

// What an end may close. Kept: only the return of an include looks at the type of the node; the
// others close whatever they point at.
struct Storage::ClosingRule {
  Type end;
  Node::Type node;
  bool checks_type = false;

  static const ClosingRule& of(Type end);
};

// Of a span's end.
const Storage::ClosingRule& Storage::ClosingRule::of(Type end) {
  static constexpr std::array rules = {
      ClosingRule{Type::FUNCTION_RETURN, Node::Type::FUNCTION_CALL},
      ClosingRule{Type::FUNCTION_EXCEPTION, Node::Type::FUNCTION_CALL},
      ClosingRule{Type::INCLUDE_RETURN, Node::Type::INCLUDE_CALL, true},
      ClosingRule{Type::INCLUDE_EXCEPTION, Node::Type::INCLUDE_CALL},
      ClosingRule{Type::SAPI_WRITE_END, Node::Type::SAPI_WRITE},
  };
  constexpr auto has_rule = [](const Checkpoint::TypeInfo& type) {
    return std::any_of(rules.begin(), rules.end(),
                       [&](const ClosingRule& rule) { return rule.end == type.type; });
  };
  static_assert(
      std::all_of(Checkpoint::types.begin(), Checkpoint::types.end(),
                  [=](const auto& type) { return type.role != Role::span_end || has_rule(type); }));
  std::size_t row = 0;
  while (rules[row].end != end) ++row;
  return rules[row];
}

void Storage::report(const Finding& finding) {
  summary_.count(finding_info(finding.kind).effect);
  if (sink_ != nullptr) sink_->report(finding);
}

// Valid, and of this file.
bool Storage::takes(const Checkpoint::Base& record) const {
  return record.is_valid() && record.file() == file_;
}

Storage::NodeId Storage::add_checkpoint(const Checkpoint::Base& record) {
  if (!takes(record)) return no_node;
  if (record.entities() != entities_.get()) {
    return add_checkpoint(Checkpoint::Base::sighted(record.view(), *entities_));
  }
  switch (type_info(record.type()).role) {
    case Role::root: return add_startup(record);
    case Role::root_end: return add_shutdown(record);
    case Role::span: return open(record);
    case Role::span_end: return check_is_open(record) ? close(record) : no_node;
    case Role::leaf: return add_leaf(record);
    case Role::none: break;
  }
  Finding unknown = finding(Kind::unknown_record, record);
  unknown.first = static_cast<std::uint64_t>(record.type());
  report(unknown);
  return no_node;
}

std::shared_ptr<const Node::Base> Storage::add_checkpoint(
    const std::shared_ptr<const Checkpoint::Base>& record) {
  if (record == nullptr) return nullptr;
  const NodeId id = add_checkpoint(*record);
  return id != no_node ? node(id) : nullptr;
}

bool Storage::check_is_open(const Checkpoint::Base& record) {
  if (top_ != no_node) return true;
  report(finding(Kind::nothing_open, record));
  return false;
}

Storage::NodeId Storage::add_node(const Checkpoint::Base& record) {
  const std::uint32_t begin = record.offset();
  if (!nodes_.empty() && begin <= nodes_.back().begin) is_rising_ = false;
  nodes_.push_back({begin, no_end, top_});
  return node_count() - 1;
}

Storage::NodeId Storage::add_startup(const Checkpoint::Base& record) {
  if (!nodes_.empty()) {
    report(finding(Kind::second_startup, record));
    return no_node;
  }
  top_ = add_node(record);
  start_timestamp_ = record.timestamp();
  start_memory_ = record.memory();
  return top_;
}

Storage::NodeId Storage::open(const Checkpoint::Base& record) {
  if (!check_is_open(record)) return no_node;
  top_ = add_node(record);
  return top_;
}

Storage::NodeId Storage::add_leaf(const Checkpoint::Base& record) {
  return check_is_open(record) ? add_node(record) : no_node;
}

Storage::NodeId Storage::add_shutdown(const Checkpoint::Base& record) {
  if (!takes(record) || !check_is_open(record)) return no_node;
  if (record.type() != Type::SHUTDOWN) {
    report(finding(Kind::wrong_class, record));
    return no_node;
  }
  while (top_ != no_node && type(top_) != Node::Type::STARTUP) pop();
  if (!check_is_open(record)) return no_node;
  return finish(top_, record);
}

Storage::NodeId Storage::add_function_return(const Checkpoint::Base& record) {
  return close_as(record, Type::FUNCTION_RETURN);
}

Storage::NodeId Storage::add_function_exception(const Checkpoint::Base& record) {
  return close_as(record, Type::FUNCTION_EXCEPTION);
}

Storage::NodeId Storage::add_include_return(const Checkpoint::Base& record) {
  return close_as(record, Type::INCLUDE_RETURN);
}

Storage::NodeId Storage::add_include_exception(const Checkpoint::Base& record) {
  return close_as(record, Type::INCLUDE_EXCEPTION);
}

Storage::NodeId Storage::close_as(const Checkpoint::Base& record, Type wanted) {
  if (!takes(record) || !check_is_open(record)) return no_node;
  if (record.type() != wanted) {
    report(finding(Kind::wrong_class, record));
    return no_node;
  }
  return close(record);
}

// Requires: a valid end of a span, and an open node.
Storage::NodeId Storage::close(const Checkpoint::Base& record) {
  const ClosingRule& rule = ClosingRule::of(record.type());
  const std::uint64_t start = Checkpoint::End(record).start();
  const NodeId id = find_span(start);
  if (id == no_node) {
    Finding lost = finding(Kind::no_begin, record);
    lost.node_type = rule.node;
    lost.first = start;
    report(lost);
    return no_node;
  }
  if (rule.checks_type && type(id) != rule.node) {
    Finding wrong = finding(Kind::wrong_node, record);
    wrong.node = id;
    wrong.node_type = type(id);
    report(wrong);
    return no_node;
  }
  if (top_ == id) return finish(id, record);
  Finding inner = finding(Kind::not_innermost, record);
  inner.node = id;
  inner.node_type = rule.node;
  report(inner);
  return close_inner(id, record);
}

// Closes a node after those that are open inside it, which stay without an end.
Storage::NodeId Storage::close_inner(NodeId id, const Checkpoint::Base& record) {
  while (top_ != no_node && top_ != id) pop();
  if (top_ != no_node) return finish(id, record);
  // Kept: the stack stays empty, and everything that follows is rejected.
  report(finding(Kind::not_open, record));
  return no_node;
}

// Closes the innermost open node.
Storage::NodeId Storage::finish(NodeId id, const Checkpoint::Base& record) {
  pop();
  nodes_[static_cast<std::size_t>(id)].end = record.offset();
  return id;
}

// The latest span that began at this address: mostly the innermost open node.
Storage::NodeId Storage::find_span(std::uint64_t address) const {
  const std::uint64_t offset = address - std::bit_cast<std::uintptr_t>(file_->data().data());
  if (address == 0 || offset >= file_->data().size()) return no_node;
  const NodeId id = is_rising_ && entry(top_).begin == offset ? top_ : find_begin(offset);
  return id != no_node && type_info(begin_type(id)).role == Role::span ? id : no_node;
}

// The latest node that began there. Checkpoints of a file rise, so it is a binary search, as a
// rule.
Storage::NodeId Storage::find_begin(std::uint64_t offset) const {
  auto found = nodes_.rend();
  if (is_rising_) {
    found = std::lower_bound(nodes_.rbegin(), nodes_.rend(), offset,
                             [](const Entry& node, std::uint64_t at) { return node.begin > at; });
  } else {
    found = std::find_if(nodes_.rbegin(), nodes_.rend(),
                         [&](const Entry& node) { return node.begin == offset; });
  }
  if (found == nodes_.rend() || found->begin != offset) return no_node;
  return static_cast<NodeId>(nodes_.rend() - found) - 1;
}

void Storage::read(NodeId id, Node::Base& node) const {
  const Entry& place = entry(id);
  const auto view = [&](std::uint32_t offset) { return CheckpointView::at(*file_, offset); };
  static_assert(std::is_trivially_destructible_v<Node::Base>);
  std::construct_at(&node, view(place.begin), *entities_, start_timestamp_, start_memory_, id,
                    place.parent);
  if (place.end != no_end) node.add_end(view(place.end), *entities_);
}

Node::Base Storage::read(NodeId id) const {
  Node::Base node;
  read(id, node);
  return node;
}

std::shared_ptr<const Node::Base> Storage::node(NodeId id) const {
  struct Kept {
    std::shared_ptr<const Entities> entities;
    Node::Base node;
  };
  const auto kept = std::make_shared<Kept>();
  kept->entities = entities_;
  read(id, kept->node);
  return {kept, &kept->node};
}

// Begin and end of a node lie far apart, and behind what the processor fetches by itself.
void NodeReader::fetch_ahead(Storage::NodeId id) const {
  constexpr Storage::NodeId ahead = 8;
  if (id >= storage_->node_count() - ahead) return;
  const Storage::Entry& place = storage_->entry(id + ahead);
  const Section& data = storage_->file_->data();
  constexpr std::uint64_t cache_line = 64;
  for (const std::uint64_t offset : {place.begin, place.end}) {
    if (offset == Storage::no_end) continue;
    __builtin_prefetch(data.data() + offset);
    __builtin_prefetch(data.data() + std::min(offset + cache_line, data.size() - 1));
  }
}

const Node::Base& NodeReader::read(Storage::NodeId id) {
  fetch_ahead(id);
  storage_->read(id, node_);
  return node_;
}

}  // namespace CT
