// SPDX-License-Identifier: MIT
//
// Nodes that explain a request however little time they took.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ctmeasure/ct_node_set.h"
#include "tools/cttool/ct_fold.h"
#include "tools/cttool/ct_names.h"

namespace CT::Tool {

// Whether a call or an include ended by throwing. No record is read for it.
bool ended_with_exception(const Trace& trace, NodeId id);

// How many members of a fold ended so, and how many never did.
struct FoldOutcomes {
  std::int64_t threw = 0;
  std::int64_t open = 0;
};
FoldOutcomes outcomes_of(const Trace& trace, const Measures& measures, const Folder& folder,
                         const Fold& fold);

// Calls that never ended, then what ended with an exception, then PHP's errors, each the latest
// first, with all that is around them in the scope. At most `room` nodes in all; one that does not
// fit with what is around it is left out. The set is not numbered.
NodeSet notable_nodes(const Trace& trace, const Measures& measures, const Scope& scope,
                      std::size_t room);

}  // namespace CT::Tool
