// SPDX-License-Identifier: MIT
//
// The nodes that the filters of a tree leave, for what is made of a part of a trace.
#pragma once

#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_node_set.h"
#include "tools/cttool/ct_tree_filters.h"

namespace CT::Tool {

// A status other than `done` after it was said why there are none. `verb`: what they are for.
[[nodiscard]] int choose_nodes(const TreeFilters& filters, const Trace& trace,
                               const Measures& measures, const char* verb, NodeSet& chosen);

}  // namespace CT::Tool
