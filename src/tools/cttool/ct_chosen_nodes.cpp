// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_chosen_nodes.h"

#include <cstdio>

#include "tools/cttool/ct_least_time.h"

namespace CT::Tool {

namespace {

// Of a trace without nodes there is a document that says so.
int status_of(const Trace& trace, const NodeSet& chosen, const char* verb) {
  NodeId first = 0;
  while (first != trace.node_count() && !chosen.has(first)) ++first;
  if (trace.node_count() == 0 || first != trace.node_count()) return done;
  std::fprintf(stderr, "no node is left to %s\n", verb);
  return nothing_found;
}

}  // namespace

int choose_nodes(const TreeFilters& filters, const Trace& trace, const Measures& measures,
                 const char* verb, NodeSet& chosen) {
  if (!find_visible(trace, measures, filters.nodes, chosen)) return failed;
  if (!filters.is_cutting()) return status_of(trace, chosen, verb);
  Scope scope;
  if (!scope.find(trace, measures, filters.under)) return nothing_found;
  std::int64_t whole_ns = 0;
  for (const Scope::Range& range : scope.ranges()) whole_ns += measures[range.first].total_ns;
  const auto least_ns = least_time(filters.least, whole_ns);
  if (!least_ns) return failed;
  chosen = with_lines(trace, measures, scope, chosen, filters.depth, *least_ns);
  return status_of(trace, chosen, verb);
}

}  // namespace CT::Tool
