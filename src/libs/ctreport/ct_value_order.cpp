// SPDX-License-Identifier: MIT
#include "ctreport/ct_value_order.h"

namespace CT::Report {

std::vector<NodeId> ValueOrder::sorted(const Trace& trace, const Measures& measures) const {
  std::array<std::size_t, classes> next = {};  // the place of the next node of each class
  std::size_t before = 0;
  for (std::size_t one = classes; one-- != 0;) {
    next[one] = before;
    before += counts_[one];
  }
  std::vector<NodeId> nodes(before);
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    if (has_values_.has(id)) nodes[next[class_of(trace.type(id), measures[id])]++] = id;
  }
  return nodes;
}

}  // namespace CT::Report
