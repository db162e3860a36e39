// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_top_profile.h"

#include <algorithm>

#include "ctmeasure/ct_elapsed.h"

namespace CT::Tool {

namespace {

std::int64_t measure_of(const ProfileRow& sums, TopBy by) {
  switch (by) {
    case TopBy::own: return sums.own_ns;
    case TopBy::total: return sums.total_ns;
    case TopBy::calls: return sums.calls;
    case TopBy::memory: return sums.own_memory;
  }
  return 0;
}

// Requires: both are of parts of the tree that lie apart, so that times cannot overflow.
void add(ProfileRow& sums, const ProfileRow& more) {
  sums.calls += more.calls;
  sums.own_ns += more.own_ns;
  sums.total_ns += more.total_ns;
  sums.own_memory = wrapped_sum(sums.own_memory, more.own_memory);
}

// Greatest first; those that are alike by name, so that every run prints the same.
void sort(std::vector<TopRow>& rows, TopBy by) {
  std::sort(rows.begin(), rows.end(), [by](const TopRow& a, const TopRow& b) {
    const std::int64_t of_a = measure_of(a.sums, by);
    const std::int64_t of_b = measure_of(b.sums, by);
    return of_a != of_b ? of_a > of_b : a.group->name < b.group->name;
  });
}

}  // namespace

bool TopProfile::find() {
  return callees_.find(trace_, {choice_.callers}) && callers_.find(trace_, {choice_.callees});
}

bool TopProfile::counts(NodeId id) const {
  const std::int32_t function = measures_[id].function;
  if (function < 0) return false;
  const bool is_user = trace_.functions()[static_cast<std::size_t>(function)].is_user();
  if (is_user ? choice_.builtin_only : choice_.user_only) return false;
  if (!choice_.callers.empty() && !callees_.has(function)) return false;
  const NodeId caller = trace_.parent(id);
  return choice_.callees.empty() ||
         (caller != Storage::no_node && callers_.has(measures_[caller].function));
}

void TopProfile::add_range(const Scope::Range& range, TopResult& result,
                           std::vector<ProfileRow>& sums) {
  const auto group = [&](NodeId id) {
    if (counts(id)) return grouping_.of(id);
    std::int64_t& elsewhere = [&]() -> std::int64_t& {
      switch (trace_.type(id)) {
        case Node::Type::INCLUDE_CALL: return result.includes_ns;
        case Node::Type::SAPI_WRITE: return result.output_ns;
        case Node::Type::STARTUP: return result.request_ns;
        default: return result.other_calls_ns;
      }
    }();
    elsewhere += measures_.own(id).ns;
    return no_group;
  };
  const auto part = profile(trace_, measures_, group, range.first, range.last);
  sums.resize(std::max(sums.size(), part.size()));
  for (std::size_t row = 0; row != part.size(); ++row) add(sums[row], part[row]);
  result.whole_ns += measures_[range.first].total_ns;
}

TopResult TopProfile::of(const Scope& scope) {
  TopResult result;
  std::vector<ProfileRow> sums;
  for (const Scope::Range& range : scope.ranges()) add_range(range, result, sums);
  for (std::size_t row = 0; row != sums.size(); ++row) {
    if (sums[row].calls != 0) result.rows.push_back({sums[row], &grouping_.groups()[row]});
  }
  sort(result.rows, choice_.by);
  if (choice_.limit != 0 && result.rows.size() > choice_.limit) {
    const auto rest = result.rows.begin() + static_cast<std::ptrdiff_t>(choice_.limit);
    result.left_out.assign(rest, result.rows.end());
    result.rows.erase(rest, result.rows.end());
  }
  return result;
}

}  // namespace CT::Tool
