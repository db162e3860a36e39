// SPDX-License-Identifier: MIT
//
// In which order the values of nodes stand in a report: the dearest first, as far as that is worth
// sorting. What is no call comes first; a call's class is how many bits its total time has.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_node_set.h"

namespace CT::Report {

class ValueOrder {
 public:
  static constexpr std::size_t classes = 65;
  static constexpr std::size_t no_call = classes - 1;

  // The class of a node; the highest come first.
  static std::size_t class_of(Node::Type type, const Measure& measure) {
    const bool is_call = type == Node::Type::FUNCTION_CALL || type == Node::Type::METHOD_CALL;
    return is_call ? static_cast<std::size_t>(
                         std::bit_width(static_cast<std::uint64_t>(measure.total_ns)))
                   : no_call;
  }

  // Of no node of so many.
  explicit ValueOrder(NodeId nodes) : has_values_(nodes, false) {}

  // The node has values. To be called in the order of the nodes.
  void add(NodeId id, Node::Type type, const Measure& measure) {
    has_values_.add(id);
    ++counts_[class_of(type, measure)];
  }
  // All that were added, in their order. Four bytes each.
  [[nodiscard]] std::vector<NodeId> sorted(const Trace& trace, const Measures& measures) const;

 private:
  NodeSet has_values_;
  std::array<std::size_t, classes> counts_ = {};
};

}  // namespace CT::Report
