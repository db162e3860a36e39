// SPDX-License-Identifier: MIT
//
// Sums over many nodes: what the calls of each function, or of whatever else calls are grouped by,
// come to.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT {

// Of one group. The total counts outermost calls only, so that recursion counts once: a call under
// another one of its group adds nothing to it.
struct ProfileRow {
  std::int64_t calls = 0;
  std::int64_t own_ns = 0;
  std::int64_t total_ns = 0;
  std::int64_t own_memory = 0;
};

// In place of a group: the node counts nowhere.
inline constexpr std::int32_t no_group = -1;

// The group of a node, from 0; no_group for none.
using GroupOf = std::function<std::int32_t(NodeId)>;

// The rows of the groups, those of no node included as far as a higher one has some. Only the nodes
// from `first` to `last` are looked at; what lies around them counts for nothing.
std::vector<ProfileRow> profile(const Trace& trace, const Measures& measures, const GroupOf& group,
                                NodeId first, NodeId last);
// Of the whole trace, by function: a row for each of the trace's functions.
std::vector<ProfileRow> profile_of_functions(const Trace& trace, const Measures& measures);

}  // namespace CT
