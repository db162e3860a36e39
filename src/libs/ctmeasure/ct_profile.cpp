// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_profile.h"

#include <cassert>

#include "ctmeasure/ct_elapsed.h"

namespace CT {

namespace {

// Groups that are open around a node, and how often each is.
class OpenGroups {
 public:
  // Leaves the spans that do not lie around a child of `parent`.
  void leave_to(NodeId parent) {
    while (!open_.empty() && open_.back().id > parent) {
      if (open_.back().group != no_group) --depths_[index(open_.back().group)];
      open_.pop_back();
    }
  }
  // True if the group was not open yet.
  bool enter(NodeId id, std::int32_t group) {
    open_.push_back({id, group});
    if (group == no_group) return false;
    if (depths_.size() <= index(group)) depths_.resize(index(group) + 1);
    return depths_[index(group)]++ == 0;
  }

 private:
  struct Span {
    NodeId id;
    std::int32_t group;
  };
  static std::size_t index(std::int32_t group) { return static_cast<std::size_t>(group); }

  std::vector<Span> open_;
  std::vector<std::int32_t> depths_;
};

}  // namespace

std::vector<ProfileRow> profile(const Trace& trace, const Measures& measures, const GroupOf& group,
                                NodeId first, NodeId last) {
  assert(first >= 0 && last < measures.node_count());
  std::vector<ProfileRow> rows;
  OpenGroups open;
  for (NodeId id = first; id <= last; ++id) {
    const Measure& node = measures[id];
    if (!node.has(Measure::is_span)) continue;
    open.leave_to(trace.parent(id));
    const std::int32_t number = group(id);
    const bool is_outermost = open.enter(id, number);
    if (number == no_group) continue;
    const auto place = static_cast<std::size_t>(number);
    if (rows.size() <= place) rows.resize(place + 1);
    ProfileRow& row = rows[place];
    ++row.calls;
    const OwnMeasure own = own_of(trace, measures, id);
    row.own_ns += own.ns;
    if (is_outermost) row.total_ns += node.total_ns;
    row.own_memory = wrapped_sum(row.own_memory, own.memory);
  }
  return rows;
}

std::vector<ProfileRow> profile_of_functions(const Trace& trace, const Measures& measures) {
  const auto function = [&](NodeId id) { return measures[id].function; };
  std::vector<ProfileRow> rows = profile(trace, measures, function, 0, measures.node_count() - 1);
  rows.resize(trace.functions().size());
  return rows;
}

}  // namespace CT
