// SPDX-License-Identifier: MIT
//
// Which node a record belongs to, and where the record that began it was written.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/ct_trace.h"

namespace CT::Redact {

// Four bytes a node.
class NodeFinder {
 public:
  // Borrows: the trace.
  explicit NodeFinder(const Trace& trace) : trace_(trace) {}

  // The node that a record at this offset begins; nothing if it begins none. Requires: offsets that
  // rise from call to call, or the last one once more.
  std::optional<NodeId> begun_at(std::uint32_t offset);
  // The node that began at an offset before the last one of begun_at(); nothing if none did.
  std::optional<NodeId> find(std::uint64_t offset);

  // Where the record that begins a node was written. Requires: nodes in their order.
  void set_place(NodeId node, std::uint32_t offset);
  // Requires: a node whose place was set.
  [[nodiscard]] std::uint32_t place(NodeId node) const {
    return places_[static_cast<std::size_t>(node)];
  }
  [[nodiscard]] bool has_place(NodeId node) const {
    return static_cast<std::size_t>(node) < places_.size();
  }

 private:
  const Trace& trace_;
  NodeId next_ = 0;
  PlainArray<std::uint32_t> places_;
  std::vector<NodeId> open_;
};

}  // namespace CT::Redact
