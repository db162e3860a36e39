// SPDX-License-Identifier: MIT
//
// Depth and last descendant of one node after the other, in the order of the trace, for whoever
// goes through all of them: it keeps what is open, where CT::Trace keeps the shape of the whole
// tree.
#pragma once

#include <cstdint>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/ct_trace.h"

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
    last_ = id_;
    const bool has_children = id_ + 1 < trace_.node_count() && trace_.parent(id_ + 1) == id_;
    if (!has_children) return;
    last_ = find_last();
    around_.push_back(last_);
  }

  [[nodiscard]] std::uint32_t depth() const { return depth_; }
  [[nodiscard]] NodeId last() const { return last_; }

 private:
  // What began before a node ended lies under it; what never ended goes on as long as what is
  // around it.
  [[nodiscard]] NodeId find_last() const {
    const NodeId limit = around_.empty() ? trace_.node_count() - 1 : around_.back();
    const std::uint32_t end = trace_.end_offset(id_);
    if (end == Storage::no_end) return limit;
    NodeId within = id_;  // begins before the end
    NodeId step = 1;
    while (limit - within > step && trace_.begin_offset(within + step) < end) {
      within += step;
      step *= 2;
    }
    NodeId behind = limit - within > step ? within + step : limit + 1;
    while (behind - within > 1) {
      const NodeId middle = within + (behind - within) / 2;
      (trace_.begin_offset(middle) < end ? within : behind) = middle;
    }
    return within;
  }

  const Trace& trace_;
  PlainArray<NodeId> around_;  // the last ones under the nodes that are open
  NodeId id_ = Storage::no_node;
  std::uint32_t depth_ = 0;
  NodeId last_ = Storage::no_node;
};

}  // namespace CT::Sql
