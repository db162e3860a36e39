// SPDX-License-Identifier: MIT
#include "ctredact/ct_tally.h"

namespace CT::Redact {

void Tally::commit() {
  for (const Mask& mask : pending_) {
    Row& row = rows_[{mask.rule, mask.place}];
    ++row.count;
    ++total_;
    const bool is_new = row.nodes.empty() || row.nodes.back() < mask.node;
    if (mask.node != no_node && is_new && row.nodes.size() < most_nodes) {
      row.nodes.push_back(mask.node);
    }
  }
  pending_.clear();
}

}  // namespace CT::Redact
