// SPDX-License-Identifier: MIT
//
// Depth and last descendant of one node after the other, in the order of the trace, for whoever
// goes through all of them: it keeps what is open, where CT::Trace keeps the shape of the whole
// tree.
#pragma once

#include <cstdint>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_last_under.h"

namespace CT::Sql {

class ShapeWalk {
 public:
  // Borrows: the trace.
  explicit ShapeWalk(const Trace& trace) : trace_(trace) {}

  // To the next node, 0 first. Requires: each node in turn.
  void next() {
    ++id_;
    while (!around_.empty() && around_.back() < id_) around_.pop_back();
    depth_ = static_cast<std::uint32_t>(around_.size());
    last_ = last_under(trace_, id_, around_.empty() ? trace_.node_count() - 1 : around_.back());
    if (last_ != id_) around_.push_back(last_);
  }

  [[nodiscard]] std::uint32_t depth() const { return depth_; }
  [[nodiscard]] NodeId last() const { return last_; }

 private:
  const Trace& trace_;
  PlainArray<NodeId> around_;  // the last ones under the nodes that are open
  NodeId id_ = Storage::no_node;
  std::uint32_t depth_ = 0;
  NodeId last_ = Storage::no_node;
};

}  // namespace CT::Sql
