// SPDX-License-Identifier: MIT
//
// The execution tree of one request, and the functions and classes that it refers to. Checkpoints
// are added in file order; begins and ends are paired by address, the nesting is repaired where
// ends were lost, and what does not fit is logged and left out. Nothing here ends the run.
//
// Of a node it keeps twelve bytes: where its begin and its end lie in DATA, and its parent. Records
// and nodes are made from that when somebody asks, so the tree stays small beside the file.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_entity.h"
#include "codetrace/model/ct_records.h"
#include "codetrace/tree/ct_node.h"
#include "kcommon/k_export.h"

namespace CT {

class CODETRACE_EXPORT Storage : public EntityCache {
 public:
  // A node's number, which is also its place in order of creation.
  using NodeId = std::int32_t;
  static constexpr NodeId no_node = -1;

  // Borrows: the file of all its checkpoints.
  explicit Storage(const File& file) : file_(&file) {}

  // Returns the node that the checkpoint opened, closed or made, or `no_node` when it was rejected:
  // invalid records and those of another file without a message, others with one in the log.
  NodeId add_checkpoint(const Checkpoint::Base& record);
  // The same with objects of their own; null for null and for a rejected record.
  std::shared_ptr<Node::Base> add_checkpoint(const std::shared_ptr<Checkpoint::Base>& record);

  // What add_checkpoint does with a record of the one type that each is named after.
  NodeId add_shutdown(const Checkpoint::Base& record);
  NodeId add_function_return(const Checkpoint::Base& record);
  NodeId add_function_exception(const Checkpoint::Base& record);
  NodeId add_include_return(const Checkpoint::Base& record);
  NodeId add_include_exception(const Checkpoint::Base& record);

  // Every node ever made, numbered from 0 in order of creation.
  [[nodiscard]] NodeId node_count() const { return static_cast<NodeId>(nodes_.size()); }
  // Requires: a number below node_count().
  [[nodiscard]] std::shared_ptr<Node::Base> node(NodeId id);

 private:
  friend class NodeReader;

  static constexpr std::uint32_t no_end = 0xFFFFFFFF;

  struct Entry {
    std::uint32_t begin;  // offsets in DATA
    std::uint32_t end;
    NodeId parent;
  };
  struct ClosingRule;

  NodeId add_startup(const Checkpoint::Base& record);
  NodeId add_node(const Checkpoint::Base& record);
  NodeId open(const Checkpoint::Base& record);
  NodeId add_leaf(const Checkpoint::Base& record);
  NodeId close(const Checkpoint::Base& record, const ClosingRule& rule);
  NodeId finish(NodeId id, const Checkpoint::Base& record);
  bool check_is_open(const Checkpoint::Base& record) const;
  [[nodiscard]] NodeId find_span(std::uint64_t address) const;
  void pop() { top_ = nodes_[static_cast<std::size_t>(top_)].parent; }
  [[nodiscard]] const Entry& entry(NodeId id) const { return nodes_[static_cast<std::size_t>(id)]; }
  [[nodiscard]] Node::Base::Type node_type(NodeId id) const;

  const File* file_;
  PlainArray<Entry> nodes_;
  // The innermost open node. The nodes open around it are its parent, that one's parent, and so on:
  // the stack needs no list of its own.
  NodeId top_ = no_node;
  // Whether each node began behind the one before it, as they do in file order.
  bool is_rising_ = true;
  KTime::Timestamp start_timestamp_;
  std::uint64_t start_memory_ = 0;
};

// Makes nodes one at a time in the same room, without allocation: for the outputs, which look at
// each node once.
class CODETRACE_EXPORT NodeReader {
 public:
  // Borrows: the storage.
  explicit NodeReader(Storage& storage) : storage_(&storage) {}

  // Lives until the next call. Requires: a number below the storage's node_count().
  const Node::Base& read(Storage::NodeId id);

 private:
  void fetch_ahead(Storage::NodeId id) const;

  Storage* storage_;
  Checkpoint::Record begin_;
  Checkpoint::Record end_;
  std::variant<std::monostate, Node::Startup, Node::FunctionCall, Node::IncludeCall,
               Node::SapiWrite, Node::SapiFlush, Node::SapiHeader, Node::SapiSendHeaders,
               Node::ScriptExit, Node::ScriptError, Node::UserEvent>
      node_;
};

}  // namespace CT
