// SPDX-License-Identifier: MIT
//
// Folds are opened one by one, always the one with the greatest total that is known so far. What is
// not open yet lies under those that are, and none of it has a greater total than what it lies
// under.
#include "tools/cttool/ct_tree_choice.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "tools/cttool/ct_notable.h"

namespace CT::Tool {

namespace {

// Keeps what is around a node that is kept.
NodeSet with_ways_to(const Trace& trace, const Measures& measures, const NamedFunctions& named) {
  NodeSet kept(trace.node_count(), false);
  for (NodeId id = trace.node_count() - 1; id >= 0; --id) {
    if (named.has(measures[id].function)) kept.add(id);
    const NodeId above = trace.parent(id);
    if (kept.has(id) && above != Storage::no_node) kept.add(above);
  }
  return kept;
}

class Choice {
 public:
  Choice(const NodeSet& wanted, Folder& folder, const TakesFold& takes, std::size_t limit)
      : wanted_(wanted), folder_(folder), takes_(takes), limit_(limit) {}

  std::vector<NodeId> run(const Scope& scope) {
    folder_.add_outermost(scope, folds_);
    offer(0);
    while (!candidates_.empty() && chosen_.size() != limit_) {
      const Candidate best = *candidates_.begin();
      candidates_.erase(candidates_.begin());
      chosen_.push_back(best.fold.first);
      folder_.add_children(best.fold, folds_);
      offer(best.depth + 1);
    }
    std::sort(chosen_.begin(), chosen_.end());
    return std::move(chosen_);
  }

 private:
  struct Candidate {
    bool is_wanted;
    std::int64_t total_ns;
    Fold fold;
    std::uint32_t depth;

    bool operator<(const Candidate& other) const {
      return std::tuple(!is_wanted, -total_ns, fold.first) <
             std::tuple(!other.is_wanted, -other.total_ns, other.fold.first);
    }
  };

  // Makes candidates of folds_; only so many are kept as may be taken at all.
  void offer(std::uint32_t depth) {
    for (const Fold& fold : folds_) {
      if (!takes_(fold, depth)) continue;
      bool is_wanted = false;
      folder_.for_each_member(fold, [&](NodeId id) { is_wanted = is_wanted || wanted_.has(id); });
      candidates_.insert({is_wanted, folder_.sums(fold).total_ns, fold, depth});
      if (candidates_.size() > limit_) candidates_.erase(std::prev(candidates_.end()));
    }
    folds_.clear();
  }

  const NodeSet& wanted_;
  Folder& folder_;
  const TakesFold& takes_;
  std::size_t limit_;
  std::vector<Fold> folds_;
  std::set<Candidate> candidates_;
  std::vector<NodeId> chosen_;
};

}  // namespace

bool find_visible(const Trace& trace, const Measures& measures, const NodeFilter& filter,
                  NodeSet& visible) {
  NamedFunctions hidden;
  NamedFunctions only;
  if (!hidden.find(trace, filter.hidden) || !only.find(trace, filter.only)) return false;
  visible =
      filter.only.empty() ? NodeSet(trace.node_count(), true) : with_ways_to(trace, measures, only);
  const auto hides = [&](std::int32_t function) {
    return (!filter.hidden.empty() && hidden.has(function)) ||
           (filter.no_builtin && !trace.functions()[static_cast<std::size_t>(function)].is_user());
  };
  for (NodeId id = 0; id != trace.node_count(); ++id) {
    if (const std::int32_t function = measures[id].function; function >= 0 && hides(function)) {
      visible.remove(id);
    }
  }
  visible.number();
  return true;
}

NodeSet with_lines(const Trace& trace, const Measures& measures, const Scope& scope,
                   const NodeSet& visible, std::optional<std::uint32_t> depth,
                   std::int64_t least_ns) {
  NodeSet lines(trace.node_count(), false);
  std::vector<NodeId> around;  // the last node under each line around the one that is looked at
  for (const Scope::Range& range : scope.ranges()) {
    for (NodeId id = range.first; id <= range.last; ++id) {
      while (!around.empty() && around.back() < id) around.pop_back();
      if (!visible.has(id)) continue;
      if ((depth && around.size() > *depth) || measures[id].total_ns < least_ns) {
        id = trace.last(id);
        continue;
      }
      lines.add(id);
      around.push_back(trace.last(id));
    }
  }
  return lines;
}

std::vector<NodeId> choose_lines(const Trace& trace, const Measures& measures, Folder& folder,
                                 const Scope& scope, const TakesFold& takes, std::size_t limit) {
  constexpr std::size_t share = 4;
  const NodeSet wanted = notable_nodes(trace, measures, scope, limit / share);
  return Choice(wanted, folder, takes, limit).run(scope);
}

}  // namespace CT::Tool
