// SPDX-License-Identifier: MIT
#include "codetrace/ct_storage.h"

#include <algorithm>
#include <bit>
#include <type_traits>

#include "kcommon/k_logger.h"

namespace CT {

using Checkpoint::Type;

namespace {

template <class Class>
bool is_of_class(const Checkpoint::Base& record) {
  return Checkpoint::record_as<Class>(record) != nullptr;
}

bool is_span(std::uint8_t type) {
  switch (static_cast<Type>(type)) {
    case Type::FUNCTION_CALL:
    case Type::METHOD_CALL:
    case Type::INCLUDE_CALL:
    case Type::SAPI_WRITE_START: return true;
    default: return false;
  }
}

}  // namespace

// How an end finds its node: what the node is called in messages, the record's class, and whether
// the node's type must be INCLUDE_CALL.
struct Storage::ClosingRule {
  std::string_view node_name;
  bool (*is_right_class)(const Checkpoint::Base&);
  // Kept: only the return of an include looks at the type; the others close whatever they point at.
  bool checks_type = false;
};

Storage::NodeId Storage::add_checkpoint(const Checkpoint::Base& record) {
  if (!record.is_valid() || &record.view().file() != file_) return no_node;
  switch (record.type()) {
    case Type::STARTUP: return add_startup(record);
    case Type::SHUTDOWN: return add_shutdown(record);
    case Type::FUNCTION_CALL:
    case Type::METHOD_CALL:
    case Type::INCLUDE_CALL:
    case Type::SAPI_WRITE_START: return open(record);
    case Type::FUNCTION_RETURN: return add_function_return(record);
    case Type::FUNCTION_EXCEPTION: return add_function_exception(record);
    case Type::INCLUDE_RETURN: return add_include_return(record);
    case Type::INCLUDE_EXCEPTION: return add_include_exception(record);
    case Type::SAPI_WRITE_END:
      return close(record, {"SAPI_WRITE", is_of_class<Checkpoint::SapiWriteEnd>});
    case Type::SAPI_FLUSH:
    case Type::SAPI_HEADER:
    case Type::SAPI_SEND_HEADERS:
    case Type::SCRIPT_EXIT:
    case Type::SCRIPT_ERROR:
    case Type::USER_EVENT: return add_leaf(record);
    case Type::CRASH:
    case Type::INVALID: break;
  }
  klog(0, "Unknown checkpoint type {}", static_cast<unsigned>(record.type()));
  return no_node;
}

std::shared_ptr<Node::Base> Storage::add_checkpoint(
    const std::shared_ptr<Checkpoint::Base>& record) {
  if (record == nullptr) return nullptr;
  const NodeId id = add_checkpoint(*record);
  return id != no_node ? node(id) : nullptr;
}

bool Storage::check_is_open(const Checkpoint::Base& record) const {
  if (top_ != no_node) return true;
  klog(0, "{} checkpoint without {} checkpoint", type_name(record.type()),
       type_name(Type::STARTUP));
  return false;
}

Storage::NodeId Storage::add_node(const Checkpoint::Base& record) {
  const std::uint32_t begin = record.view().offset();
  if (!nodes_.empty() && begin <= nodes_.back().begin) is_rising_ = false;
  nodes_.push_back({begin, no_end, top_});
  return node_count() - 1;
}

Storage::NodeId Storage::add_startup(const Checkpoint::Base& record) {
  if (!nodes_.empty()) {
    klog(0, "Duplicate {} checkpoint", type_name(record.type()));
    return no_node;
  }
  start_timestamp_ = record.timestamp();
  start_memory_ = record.memory();
  top_ = add_node(record);
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
  if (!check_is_open(record)) return no_node;
  while (top_ != no_node && node_type(top_) != Node::Base::Type::STARTUP) pop();
  if (!check_is_open(record)) return no_node;
  return finish(top_, record);
}

Storage::NodeId Storage::add_function_return(const Checkpoint::Base& record) {
  return close(record, {"FUNCTION_CALL", is_of_class<Checkpoint::FunctionReturn>});
}

Storage::NodeId Storage::add_function_exception(const Checkpoint::Base& record) {
  return close(record, {"FUNCTION_CALL", is_of_class<Checkpoint::FunctionException>});
}

Storage::NodeId Storage::add_include_return(const Checkpoint::Base& record) {
  return close(record, {"INCLUDE_CALL", is_of_class<Checkpoint::IncludeReturn>, true});
}

Storage::NodeId Storage::add_include_exception(const Checkpoint::Base& record) {
  return close(record, {"INCLUDE_CALL", is_of_class<Checkpoint::IncludeException>});
}

Storage::NodeId Storage::close(const Checkpoint::Base& record, const ClosingRule& rule) {
  if (!check_is_open(record)) return no_node;
  if (!rule.is_right_class(record)) {
    klog(0, "Invalid {} checkpoint", type_name(record.type()));
    return no_node;
  }
  const std::uint64_t start = static_cast<const Checkpoint::End&>(record).start();
  const NodeId id = find_span(start);
  if (id == no_node) {
    klog(0, "No {} node found with address {:#x}", rule.node_name, start);
    return no_node;
  }
  if (rule.checks_type && node_type(id) != Node::Base::Type::INCLUDE_CALL) {
    klog(0, "Expected {} node, but got {}", type_name(Node::Base::Type::INCLUDE_CALL),
         type_name(node_type(id)));
    return no_node;
  }
  if (top_ != id) {
    klog(1, "{} node with ID {} is not the last node in the stack", rule.node_name, id);
    while (top_ != no_node && top_ != id) pop();
    if (top_ == no_node) {
      // Kept: the stack stays empty, and everything that follows is rejected.
      klog(0, "Nodes stack is corrupted");
      return no_node;
    }
  }
  return finish(id, record);
}

// Closes the innermost open node.
Storage::NodeId Storage::finish(NodeId id, const Checkpoint::Base& record) {
  pop();
  nodes_[static_cast<std::size_t>(id)].end = record.view().offset();
  return id;
}

// The latest span that began at this address. Checkpoints of a file rise, so the usual answers are
// the innermost open node and a binary search.
Storage::NodeId Storage::find_span(std::uint64_t address) const {
  const std::uint64_t offset = address - std::bit_cast<std::uintptr_t>(file_->data().data());
  if (address == 0 || offset >= file_->data().size()) return no_node;
  const auto begins_here = [&](const Entry& node) { return node.begin == offset; };
  auto found = nodes_.rend();
  if (!is_rising_) {
    found = std::find_if(nodes_.rbegin(), nodes_.rend(), begins_here);
  } else if (begins_here(entry(top_))) {
    found = nodes_.rend() - top_ - 1;
  } else {
    found = std::lower_bound(nodes_.rbegin(), nodes_.rend(), offset,
                             [](const Entry& node, std::uint64_t at) { return node.begin > at; });
  }
  if (found == nodes_.rend() || !begins_here(*found)) return no_node;
  if (!is_span(CheckpointView::revisit(*file_, found->begin).type())) return no_node;
  return static_cast<NodeId>(nodes_.rend() - found) - 1;
}

namespace {

// The one table from the type of the begin record to the node's class.
template <class Make>
void with_node_class(Type begin, Make make) {
  switch (begin) {
    case Type::STARTUP: return make(std::type_identity<Node::Startup>());
    case Type::FUNCTION_CALL:
    case Type::METHOD_CALL: return make(std::type_identity<Node::FunctionCall>());
    case Type::INCLUDE_CALL: return make(std::type_identity<Node::IncludeCall>());
    case Type::SAPI_WRITE_START: return make(std::type_identity<Node::SapiWrite>());
    case Type::SAPI_FLUSH: return make(std::type_identity<Node::SapiFlush>());
    case Type::SAPI_HEADER: return make(std::type_identity<Node::SapiHeader>());
    case Type::SAPI_SEND_HEADERS: return make(std::type_identity<Node::SapiSendHeaders>());
    case Type::SCRIPT_EXIT: return make(std::type_identity<Node::ScriptExit>());
    case Type::SCRIPT_ERROR: return make(std::type_identity<Node::ScriptError>());
    case Type::USER_EVENT: return make(std::type_identity<Node::UserEvent>());
    default: __builtin_unreachable();  // no node begins with anything else
  }
}

}  // namespace

Node::Base::Type Storage::node_type(NodeId id) const {
  const CheckpointView view = CheckpointView::revisit(*file_, entry(id).begin);
  return Node::type_of_begin(static_cast<Type>(view.type()));
}

std::shared_ptr<Node::Base> Storage::node(NodeId id) {
  const Entry& place = entry(id);
  const auto record = [&](std::uint32_t offset) {
    return Checkpoint::make_record(CheckpointView::revisit(*file_, offset), this);
  };
  const std::shared_ptr<Checkpoint::Base> begin = record(place.begin);
  std::shared_ptr<Node::Base> made;
  with_node_class(begin->type(), [&]<class Class>(std::type_identity<Class>) {
    made = std::make_shared<Class>(begin, start_timestamp_, start_memory_, id, place.parent);
  });
  if (place.end != no_end) made->add_end(record(place.end));
  return made;
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
  const Storage::Entry& place = storage_->entry(id);
  // Pointers that own nothing: the records live in this reader.
  const auto record = [&](Checkpoint::Record& room, std::uint32_t offset) {
    const CheckpointView view = CheckpointView::revisit(*storage_->file_, offset);
    return Node::Base::Record(Node::Base::Record(), room.decode(view, storage_));
  };
  const Node::Base::Record begin = record(begin_, place.begin);
  Node::Base* made = nullptr;
  with_node_class(begin->type(), [&]<class Class>(std::type_identity<Class>) {
    made = &node_.emplace<Class>(begin, storage_->start_timestamp_, storage_->start_memory_, id,
                                 place.parent);
  });
  if (place.end != Storage::no_end) made->add_end(record(end_, place.end));
  return *made;
}

}  // namespace CT
