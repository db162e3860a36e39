// SPDX-License-Identifier: MIT
//
// The tree of folds, line by line: which folds have one, and what is left out where.
#pragma once

#include <cstdint>
#include <functional>

#include "tools/cttool/ct_fold.h"

namespace CT::Tool {

// What was left out at one place: folds without a line, and all that lies under them.
struct TreeCut {
  std::int64_t folds = 0;
  std::int64_t nodes = 0;  // in them and under them
  std::int64_t total_ns = 0;
};

struct TreeLine {
  Fold fold;
  FoldSums sums;
  std::uint32_t depth = 0;           // 0 for the outermost
  NodeId parent = Storage::no_node;  // the first node of the fold around it
  TreeCut cut;                       // of what lies directly under it
  bool has_lines_under = false;
};

class TreeSink {
 public:
  virtual ~TreeSink() = default;
  // False ends the walk.
  virtual bool line(const TreeLine& line) = 0;
};

// Whether a fold has a line; if not, nothing under it has.
using TakesFold = std::function<bool(const Fold& fold, std::uint32_t depth)>;

// In the order of the trace, a fold before what lies under it. Returns what was left out of the
// outermost folds; of others the line above them has told. Keeps 12 bytes for each level that is
// open, and as much for each fold that is still to come on one of them.
TreeCut walk_tree(Folder& folder, const Scope& scope, const TakesFold& takes, TreeSink& sink);
// The same for the children of a fold, which itself has no line and is at depth 0.
TreeCut walk_children(Folder& folder, const Fold& fold, const TakesFold& takes, TreeSink& sink);
// What a node called itself, the first `limit` folds of it; 0 is all.
TreeCut walk_called(Folder& folder, NodeId id, std::size_t limit, TreeSink& sink);

}  // namespace CT::Tool
