// SPDX-License-Identifier: MIT
//
// The execution tree of one request, and the functions and classes that it refers to. Checkpoints
// are added in file order; begins and ends are paired by address, the nesting is repaired where
// ends were lost, and what does not fit is reported and left out. Nothing here ends the run.
//
// Of a node it keeps twelve bytes: where its begin and its end lie in DATA, and its parent. Records
// and nodes are made from that when somebody asks, so the tree stays small beside the file. The
// const operations may be used from several threads at once, as long as nobody adds.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_entity.h"
#include "codetrace/tree/ct_diagnostics.h"
#include "codetrace/tree/ct_node.h"
#include "kcommon/k_export.h"

namespace CT {

class CODETRACE_EXPORT Storage {
 public:
  // A node's number, which is also its place in order of creation.
  using NodeId = std::int32_t;
  static constexpr NodeId no_node = -1;
  // In place of the offset of an end.
  static constexpr std::uint32_t no_end = 0xFFFFFFFF;

  // Borrows: the file of all its checkpoints, and the sink, which may be null.
  explicit Storage(const File& file, FindingSink* sink = nullptr)
      : file_(&file), sink_(sink), entities_(Entities::make(file)) {}

  // Returns the node that the checkpoint opened, closed or made, or `no_node` when it was rejected:
  // invalid records and those of another file without a word, others with a finding. Functions and
  // classes of the record are entered first, if they are not here yet.
  NodeId add_checkpoint(const Checkpoint::Base& record);
  // The same with objects of their own; null for null and for a rejected record.
  std::shared_ptr<const Node::Base> add_checkpoint(
      const std::shared_ptr<const Checkpoint::Base>& record);

  // What add_checkpoint does with a record of the one type that each is named after; a record of
  // another type is rejected.
  NodeId add_shutdown(const Checkpoint::Base& record);
  NodeId add_function_return(const Checkpoint::Base& record);
  NodeId add_function_exception(const Checkpoint::Base& record);
  NodeId add_include_return(const Checkpoint::Base& record);
  NodeId add_include_exception(const Checkpoint::Base& record);

  // Every node ever made, numbered from 0 in order of creation: parents before children, and what
  // lies under a node directly behind it.
  [[nodiscard]] NodeId node_count() const { return static_cast<NodeId>(nodes_.size()); }
  // The node, which keeps functions and classes alive. Requires: a number below node_count().
  [[nodiscard]] std::shared_ptr<const Node::Base> node(NodeId id) const;
  // The same for as long as this storage lives, made without allocation.
  [[nodiscard]] Node::Base read(NodeId id) const;

  // Of a node, without decoding it. Requires: a number below node_count(). Offsets are those of
  // header words in DATA; `no_end` for what has no end.
  [[nodiscard]] NodeId parent(NodeId id) const { return entry(id).parent; }
  [[nodiscard]] Node::Type type(NodeId id) const { return Node::type_of_begin(begin_type(id)); }
  [[nodiscard]] std::uint32_t begin_offset(NodeId id) const { return entry(id).begin; }
  [[nodiscard]] std::uint32_t end_offset(NodeId id) const { return entry(id).end; }

  // The shared entry of a descriptor that resolve_class or resolve_function found in this file,
  // decoded and numbered at its first sighting.
  const Checkpoint::ClassEntry& get_class_entry(const ClassEntry* record) {
    return entities_->add(record);
  }
  const Checkpoint::Function& get_function(const Function* descriptor) {
    return entities_->add(descriptor);
  }
  // In order of first sighting: an entry's number is its place here.
  [[nodiscard]] const std::deque<Checkpoint::ClassEntry>& class_entries() const {
    return entities_->classes();
  }
  [[nodiscard]] const std::deque<Checkpoint::Function>& functions() const {
    return entities_->functions();
  }
  [[nodiscard]] Entities& entities() { return *entities_; }
  [[nodiscard]] const Entities& entities() const { return *entities_; }

  [[nodiscard]] const File& file() const { return *file_; }
  // What was found so far, the walk's findings included.
  [[nodiscard]] const Summary& summary() const { return summary_; }
  // Counts a finding and hands it on.
  void report(const Finding& finding);
  void count_record() { ++summary_.records; }
  // No finding is handed on any more.
  void forget_sink() { sink_ = nullptr; }

 private:
  friend class NodeReader;

  struct Entry {
    std::uint32_t begin;  // offsets in DATA
    std::uint32_t end;
    NodeId parent;
  };
  struct CODETRACE_HIDDEN ClosingRule;

  [[nodiscard]] CODETRACE_HIDDEN bool takes(const Checkpoint::Base& record) const;
  CODETRACE_HIDDEN NodeId add_startup(const Checkpoint::Base& record);
  CODETRACE_HIDDEN NodeId add_node(const Checkpoint::Base& record);
  CODETRACE_HIDDEN NodeId open(const Checkpoint::Base& record);
  CODETRACE_HIDDEN NodeId add_leaf(const Checkpoint::Base& record);
  CODETRACE_HIDDEN NodeId close_as(const Checkpoint::Base& record, Checkpoint::Type wanted);
  CODETRACE_HIDDEN NodeId close(const Checkpoint::Base& record);
  CODETRACE_HIDDEN NodeId close_inner(NodeId id, const Checkpoint::Base& record);
  CODETRACE_HIDDEN NodeId finish(NodeId id, const Checkpoint::Base& record);
  CODETRACE_HIDDEN bool check_is_open(const Checkpoint::Base& record);
  [[nodiscard]] CODETRACE_HIDDEN NodeId find_span(std::uint64_t address) const;
  [[nodiscard]] CODETRACE_HIDDEN NodeId find_begin(std::uint64_t offset) const;
  [[nodiscard]] Checkpoint::Type begin_type(NodeId id) const {
    const unsigned char* word = file_->data().data() + entry(id).begin;
    return Checkpoint::type_of_code(type_of_header(word, file_->big_endian()));
  }
  void pop() { top_ = nodes_[static_cast<std::size_t>(top_)].parent; }
  [[nodiscard]] const Entry& entry(NodeId id) const {
    assert(id >= 0 && id < node_count());
    return nodes_[static_cast<std::size_t>(id)];
  }
  // Makes the node of an entry, with records of this storage.
  CODETRACE_HIDDEN void read(NodeId id, Node::Base& node) const;

  const File* file_;
  FindingSink* sink_;
  std::shared_ptr<Entities> entities_;
  PlainArray<Entry> nodes_;
  // The innermost open node. The nodes open around it are its parent, that one's parent, and so on:
  // the stack needs no list of its own.
  NodeId top_ = no_node;
  // Whether each node began behind the one before it, as they do in file order.
  bool is_rising_ = true;
  KTime::Timestamp start_timestamp_;
  std::uint64_t start_memory_ = 0;
  Summary summary_;
};

// Makes nodes one after the other in the same room, and asks for those to come ahead of time: for
// outputs, which look at each node once.
class CODETRACE_EXPORT NodeReader {
 public:
  // Borrows: the storage.
  explicit NodeReader(const Storage& storage) : storage_(&storage) {}

  // Lives until the next call. Requires: a number below the storage's node_count().
  const Node::Base& read(Storage::NodeId id);

 private:
  CODETRACE_HIDDEN void fetch_ahead(Storage::NodeId id) const;

  const Storage* storage_;
  Node::Base node_;
};

}  // namespace CT
