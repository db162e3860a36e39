// SPDX-License-Identifier: MIT
#include "ctsql/ct_call_index.h"

namespace CT::Sql {

// Counts the calls of each function, adds the counts up to where each begins, and puts them there.
CallIndex::CallIndex(const Measures& measures, std::size_t functions) : begins_(functions + 1) {
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const std::int32_t function = measures[id].function;
    if (function >= 0) ++begins_[static_cast<std::size_t>(function) + 1];
  }
  for (std::size_t i = 0; i != functions; ++i) begins_[i + 1] += begins_[i];
  calls_.resize(static_cast<std::size_t>(begins_.back()));
  std::vector<std::int32_t> next(begins_);
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const std::int32_t function = measures[id].function;
    if (function < 0) continue;
    calls_[static_cast<std::size_t>(next[static_cast<std::size_t>(function)]++)] = id;
  }
}

std::span<const NodeId> CallIndex::of(std::int64_t function) const {
  if (function < 0 || function >= static_cast<std::int64_t>(begins_.size()) - 1) return {};
  const auto at = static_cast<std::size_t>(function);
  const auto begin = static_cast<std::size_t>(begins_[at]);
  return std::span(calls_).subspan(begin, static_cast<std::size_t>(begins_[at + 1]) - begin);
}

}  // namespace CT::Sql
