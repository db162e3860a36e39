// SPDX-License-Identifier: MIT
//
// Which nodes of a tree are looked at, and which folds have a line where there is not room for all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/cttool/ct_fold.h"
#include "tools/cttool/ct_tree_walk.h"

namespace CT::Tool {

// As the command line has them.
struct NodeFilter {
  std::vector<std::string> hidden =
      {};                              // calls of these names have no line; their children move up
  std::vector<std::string> only = {};  // nothing but calls of these names and what is around them
  bool no_builtin = false;             // PHP's own functions are hidden
};

// The nodes that are looked at, numbered. False, after it was said why, if a pattern is none.
[[nodiscard]] bool find_visible(const Trace& trace, const Measures& measures,
                                const NodeFilter& filter, NodeSet& visible);

// Of the visible nodes those that have a line where none is folded: in the scope, with no more than
// `depth` of them around each, and none that took less than `least_ns` by itself or around it.
NodeSet with_lines(const Trace& trace, const Measures& measures, const Scope& scope,
                   const NodeSet& visible, std::optional<std::uint32_t> depth,
                   std::int64_t least_ns);

// The folds with a line, by their first nodes, in rising order: those with the greatest totals, as
// many as `limit`. A fold comes with all around it. A quarter of the lines is for what explains a
// request however little time it took, with what is around it: calls that never ended, exceptions
// and errors, the latest first. Only folds that `takes` takes are asked for. Of equal totals the
// first counts.
//
// Takes time linear in the nodes, and memory for `limit` folds and for the children of one.
std::vector<NodeId> choose_lines(const Trace& trace, const Measures& measures, Folder& folder,
                                 const Scope& scope, const TakesFold& takes, std::size_t limit);

}  // namespace CT::Tool
