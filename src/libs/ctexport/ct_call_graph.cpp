// SPDX-License-Identifier: MIT
#include "ctexport/ct_call_graph.h"

#include <algorithm>

namespace CT::Export {

void CallGraph::clear() {
  std::fill(nodes_.begin(), nodes_.end(), Node());
  arcs_.clear();
  slots_.assign(most_arcs, none);
}

CallGraph::Node& CallGraph::at(Place function) {
  if (nodes_.size() <= function) nodes_.resize(std::size_t{function} + 1);
  nodes_[function].is_there = true;
  return nodes_[function];
}

void CallGraph::add_self(Place function, const Costs& costs) { at(function).self.add(costs); }

void CallGraph::add_call(Place caller, Place callee, std::uint32_t line, const Costs& inclusive) {
  Arc& arc = find(caller, callee, line);
  ++arc.count;
  arc.inclusive.add(inclusive);
}

CallGraph::Arc& CallGraph::find(Place caller, Place callee, std::uint32_t line) {
  constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;
  constexpr unsigned upper_half = 32;
  const std::uint64_t key = ((std::uint64_t{caller} << upper_half) | callee) * spread + line;
  Place& slot = slots_[(key * spread) >> upper_half & (slots_.size() - 1)];
  for (Place known = slot; known != none; known = arcs_[known].next_in_slot) {
    Arc& arc = arcs_[known];
    if (arc.caller == caller && arc.callee == callee && arc.line == line) return arc;
  }
  const auto made = static_cast<Place>(arcs_.size());
  arcs_.push_back({caller, callee, line, none, slot, 0, {}});
  slot = made;
  Node& node = at(caller);
  (node.first_arc == none ? node.first_arc : arcs_[node.last_arc].next) = made;
  node.last_arc = made;
  return arcs_[made];
}

}  // namespace CT::Export
