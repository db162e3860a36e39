// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_fold.h"

#include "codetrace/model/ct_records.h"
#include "ctmeasure/ct_elapsed.h"
#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_call_line.h"

namespace CT::Tool {

Folder::Folder(const Trace& trace, const Measures& measures, const NodeSet& visible, FoldBy by)
    : trace_(trace),
      measures_(measures),
      visible_(visible),
      by_(by),
      next_(static_cast<std::size_t>(trace.node_count())) {
  for (const Checkpoint::Function& function : trace.functions()) {
    of_functions_.push_back(number_of(CT::name_of(function) + "("));
  }
}

Folder::Name Folder::number_of(const std::string& name) {
  const auto [row, is_new] = names_.try_emplace(name, static_cast<Name>(names_.size()));
  if (is_new) slots_.emplace_back();
  return row->second;
}

// Nodes that are no calls never have the name of one, which ends in a bracket here.
Folder::Name Folder::name_of(NodeId id) {
  const std::int32_t function = measures_[id].function;
  if (function >= 0) return of_functions_[static_cast<std::size_t>(function)];
  std::string name(kind_of(trace_.type(id)));
  if (const auto include = trace_.node(id).begin_as<Checkpoint::IncludeCall>()) {
    name += " ";
    name += include->include().view();
    name += ")";
  }
  return number_of(name);
}

void Folder::begin(bool is_merged, const std::vector<Fold>& folds) {
  is_merged_ = is_merged;
  first_ = folds.size();
  ++pass_;
}

void Folder::add_outermost(const Scope& scope, std::vector<Fold>& folds) {
  begin(by_ == FoldBy::all || scope.ranges().size() > 1, folds);
  for (const Scope::Range& range : scope.ranges()) add_range(range.first, range.last, folds);
}

void Folder::add_children(const Fold& fold, std::vector<Fold>& folds) {
  begin(by_ == FoldBy::all || fold.count > 1, folds);
  for_each_member(fold, [&](NodeId id) { add_range(id + 1, trace_.last(id), folds); });
}

// What lies under a node that is looked at is none of its siblings.
void Folder::add_range(NodeId first, NodeId last, std::vector<Fold>& folds) {
  for (NodeId id = first; id <= last; ++id) {
    if (!visible_.has(id)) continue;
    add_node(id, folds);
    id = trace_.last(id);
  }
}

void Folder::add_node(NodeId id, std::vector<Fold>& folds) {
  const Name name = name_of(id);
  if (by_ != FoldBy::none && is_merged_) {
    Slot& slot = slots_[static_cast<std::size_t>(name)];
    if (slot.pass == pass_) return append(folds[slot.place], id);
    slot = {pass_, static_cast<std::uint32_t>(folds.size())};
  } else if (by_ == FoldBy::runs && folds.size() != first_ && latest_ == name) {
    return append(folds.back(), id);
  }
  latest_ = name;
  folds.push_back({id, id, 1});
}

void Folder::append(Fold& fold, NodeId id) {
  next_[static_cast<std::size_t>(fold.last)] = id;
  fold.last = id;
  ++fold.count;
}

// Times cannot overflow: the members lie beside each other inside of the request.
FoldSums Folder::sums(const Fold& fold) const {
  FoldSums sums;
  for_each_member(fold, [&](NodeId id) {
    const Measure& measure = measures_[id];
    sums.nodes += visible_.count(id, trace_.last(id));
    sums.total_ns += measure.total_ns;
    sums.own_ns += measures_.own(id).ns;
    if (measure.has(Measure::has_delta)) {
      sums.memory_delta = wrapped_sum(sums.memory_delta, measure.memory_delta);
      sums.has_delta = true;
    }
    if (sums.slowest == Storage::no_node || measure.total_ns > measures_[sums.slowest].total_ns) {
      sums.slowest = id;
    }
  });
  return sums;
}

}  // namespace CT::Tool
