// SPDX-License-Identifier: MIT
//
// A trace, read: the file with its bytes and the tree with its functions and classes, as one
// object.
//
//   CT::Trace trace;
//   if (!trace.open("request.ct")) ... trace.error_message() ...
//   for (CT::NodeId id = 0; id != trace.node_count(); ++id) ... trace.node(id) ...
//
// It owns everything; nodes, records, texts and entities borrow from it, values that are kept
// (KVal) borrow its bytes. Moving it moves nothing that they point at. Once read it never changes,
// and everything that is const may be used from several threads at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/tree/ct_diagnostics.h"
#include "kcommon/k_export.h"

namespace CT {

using NodeId = Storage::NodeId;

// Called for every record in file order, valid or not, after it went into the tree. False ends the
// walk.
using RecordVisitor = std::function<bool(const Checkpoint::Base&)>;

// The walk over all checkpoints of a file: each becomes a record, goes into the tree, and is shown
// to the caller. Types that are not decoded and damage are reported to the storage, once each.
// Requires: a storage made for this file. An unopened file has no checkpoints.
CODETRACE_EXPORT void read_checkpoints(const File& file, Storage& storage,
                                       const RecordVisitor& visit = {});

class CODETRACE_EXPORT Trace {
 public:
  Trace();
  ~Trace();
  // What is moved from may only be assigned to or destroyed.
  Trace(Trace&& other) noexcept;
  Trace& operator=(Trace&& other) noexcept;

  // Opens a file by name, or a trace in memory, which is copied, and reads it whole. False, with
  // error_message(), if it cannot be read or is no whole trace; the trace is then empty. What is
  // odd about it goes to the sink, if there is one, until open() returns.
  [[nodiscard]] bool open(std::string_view name, FindingSink* sink = nullptr);
  [[nodiscard]] bool open(const unsigned char* bytes, std::size_t size,
                          FindingSink* sink = nullptr);
  // Takes over an open file and reads it; `visit` is shown each record on the way.
  void read(File file, FindingSink* sink = nullptr, const RecordVisitor& visit = {});

  [[nodiscard]] bool is_open() const;
  // Why the last open() failed; UTF-8.
  [[nodiscard]] const std::string& error_message() const;

  [[nodiscard]] const File& file() const;
  [[nodiscard]] const Storage& storage() const;
  [[nodiscard]] const Summary& summary() const { return storage().summary(); }
  // In order of first sighting: an entry's number is its place here.
  [[nodiscard]] const std::deque<Checkpoint::Function>& functions() const {
    return storage().functions();
  }
  [[nodiscard]] const std::deque<Checkpoint::ClassEntry>& classes() const {
    return storage().class_entries();
  }

  // Nodes are numbered in file order, from 0: parents before children, and what lies under a node
  // directly behind it.
  [[nodiscard]] NodeId node_count() const { return storage().node_count(); }
  // Requires, here and below: a number below node_count().
  [[nodiscard]] Node::Base node(NodeId id) const { return storage().read(id); }

  // What is known of a node without decoding it: nothing here reads a record but type(), which
  // reads a header word. depth(), last() and next_sibling() find the shape of the whole tree at
  // their first call, in eight bytes a node.
  [[nodiscard]] NodeId parent(NodeId id) const { return storage().parent(id); }
  [[nodiscard]] Node::Type type(NodeId id) const { return storage().type(id); }
  // Offsets in DATA of the checkpoints that begin and end it; Storage::no_end for no end.
  [[nodiscard]] std::uint32_t begin_offset(NodeId id) const { return storage().begin_offset(id); }
  [[nodiscard]] std::uint32_t end_offset(NodeId id) const { return storage().end_offset(id); }
  // The number of its ancestors.
  [[nodiscard]] std::uint32_t depth(NodeId id) const { return shape().depth[index(id)]; }
  // The last node that lies under it; itself if none does.
  [[nodiscard]] NodeId last(NodeId id) const { return shape().last[index(id)]; }
  // Storage::no_node for the last child.
  [[nodiscard]] NodeId next_sibling(NodeId id) const;

 private:
  struct Shape {
    PlainArray<std::uint32_t> depth;
    PlainArray<NodeId> last;
  };
  struct State;

  static std::size_t index(NodeId id) { return static_cast<std::size_t>(id); }
  [[nodiscard]] const Shape& shape() const;

  std::unique_ptr<State> state_;
};

}  // namespace CT
