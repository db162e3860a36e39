// SPDX-License-Identifier: MIT
//
// The folds to come are one array: the siblings of each open level, one level behind the other.
#include "tools/cttool/ct_tree_walk.h"

#include <vector>

namespace CT::Tool {

namespace {

class Walk {
 public:
  Walk(Folder& folder, const TakesFold& takes, TreeSink& sink)
      : folder_(folder), takes_(takes), sink_(sink) {}

  TreeCut run(const Scope& scope) {
    folder_.add_outermost(scope, folds_);
    return run_all(Storage::no_node);
  }
  TreeCut run(const Fold& fold) {
    outermost_ = 1;
    folder_.add_children(fold, folds_);
    return run_all(fold.first);
  }

 private:
  // Siblings with a line: those that are still to come.
  struct Level {
    std::uint32_t next;
    std::uint32_t end;
    NodeId parent;
  };

  TreeCut run_all(NodeId parent) {
    const TreeCut cut = keep_lines(0);
    open(0, parent);
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.end) {
        close();
      } else if (!put_line(level)) {
        break;
      }
    }
    return cut;
  }

  // Of folds under the open levels.
  [[nodiscard]] std::uint32_t depth() const {
    return outermost_ + static_cast<std::uint32_t>(levels_.size());
  }

  // Drops the folds from here on that have no line.
  TreeCut keep_lines(std::size_t first) {
    TreeCut cut;
    std::size_t kept = first;
    for (std::size_t i = first; i != folds_.size(); ++i) {
      if (takes_(folds_[i], depth())) {
        folds_[kept++] = folds_[i];
        continue;
      }
      const FoldSums sums = folder_.sums(folds_[i]);
      ++cut.folds;
      cut.nodes += sums.nodes;
      cut.total_ns += sums.total_ns;
    }
    folds_.resize(kept);
    return cut;
  }

  void open(std::size_t first, NodeId parent) {
    levels_.push_back(
        {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(folds_.size()), parent});
  }

  bool put_line(Level& level) {
    TreeLine line;
    line.fold = folds_[level.next++];
    line.sums = folder_.sums(line.fold);
    line.depth = depth() - 1;
    line.parent = level.parent;
    const std::size_t first = folds_.size();
    folder_.add_children(line.fold, folds_);
    line.cut = keep_lines(first);
    line.has_lines_under = folds_.size() != first;
    if (!sink_.line(line)) return false;
    if (line.has_lines_under) open(first, line.fold.first);
    return true;
  }

  void close() {
    levels_.pop_back();
    folds_.resize(levels_.empty() ? 0 : levels_.back().end);
  }

  Folder& folder_;
  const TakesFold& takes_;
  TreeSink& sink_;
  std::vector<Fold> folds_;
  std::vector<Level> levels_;
  std::uint32_t outermost_ = 0;  // depth
};

}  // namespace

TreeCut walk_tree(Folder& folder, const Scope& scope, const TakesFold& takes, TreeSink& sink) {
  return Walk(folder, takes, sink).run(scope);
}

TreeCut walk_children(Folder& folder, const Fold& fold, const TakesFold& takes, TreeSink& sink) {
  return Walk(folder, takes, sink).run(fold);
}

TreeCut walk_called(Folder& folder, NodeId id, std::size_t limit, TreeSink& sink) {
  std::size_t lines = 0;
  const auto takes = [&](const Fold&, std::uint32_t depth) {
    return depth == 1 && (limit == 0 || lines++ < limit);
  };
  return walk_children(folder, {id, id, 1}, takes, sink);
}

}  // namespace CT::Tool
