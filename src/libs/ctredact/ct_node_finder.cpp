// SPDX-License-Identifier: MIT
#include "ctredact/ct_node_finder.h"

namespace CT::Redact {

std::optional<NodeId> NodeFinder::begun_at(std::uint32_t offset) {
  const NodeId count = trace_.node_count();
  while (next_ != count && trace_.begin_offset(next_) < offset) ++next_;
  if (next_ == count || trace_.begin_offset(next_) != offset) return {};
  return next_;
}

// Mostly the innermost node that is open. Nodes rise as their offsets do.
std::optional<NodeId> NodeFinder::find(std::uint64_t offset) {
  if (!open_.empty() && trace_.begin_offset(open_.back()) == offset) {
    const NodeId node = open_.back();
    open_.pop_back();
    return node;
  }
  NodeId low = 0;
  auto high = static_cast<NodeId>(places_.size());
  while (low != high) {
    const NodeId middle = low + (high - low) / 2;
    if (trace_.begin_offset(middle) < offset) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  if (!has_place(low) || trace_.begin_offset(low) != offset) return {};
  while (!open_.empty() && open_.back() >= low) open_.pop_back();
  return low;
}

void NodeFinder::set_place(NodeId node, std::uint32_t offset) {
  while (!has_place(node)) places_.push_back(offset);
  if (node_info(trace_.type(node)).is_span) open_.push_back(node);
}

}  // namespace CT::Redact
