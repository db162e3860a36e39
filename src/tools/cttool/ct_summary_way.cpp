// SPDX-License-Identifier: MIT
//
// The slowest way down: from the request always into the child that took the most.
#include <algorithm>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

// The child with the most time, the first of those; no_node if none took any.
NodeId slowest_child(const SummaryFacts& facts, NodeId id) {
  NodeId slowest = Storage::no_node;
  const NodeId first = id + 1 <= facts.trace.last(id) ? id + 1 : Storage::no_node;
  for (NodeId child = first; child != Storage::no_node; child = facts.trace.next_sibling(child)) {
    const std::int64_t total = facts.measures[child].total_ns;
    if (total > (slowest != Storage::no_node ? facts.measures[slowest].total_ns : 0)) {
      slowest = child;
    }
  }
  return slowest;
}

std::vector<NodeId> slowest_way(const SummaryFacts& facts) {
  std::vector<NodeId> way;
  if (facts.is_empty()) return way;
  for (NodeId id = 0; id != Storage::no_node; id = slowest_child(facts, id)) way.push_back(id);
  return way;
}

// Whether nearly all of a node's time is that of the next one on the way.
bool hands_on(const SummaryFacts& facts, NodeId id, NodeId next) {
  constexpr double nearly_all = 0.9;
  const auto whole = static_cast<double>(facts.measures[id].total_ns);
  return static_cast<double>(facts.measures[next].total_ns) >= nearly_all * whole;
}

}  // namespace

SectionText way_text(const SummaryFacts& facts, const PageSize& page) {
  constexpr std::size_t most_lines = 9;
  constexpr std::int64_t least_share = 20;  // parts of the whole
  SectionText text;
  const std::vector<NodeId> way = slowest_way(facts);
  if (facts.total_ns() == 0 || way.size() < 2) return text;
  std::size_t passed = 0;
  std::size_t at = 0;
  for (; at != way.size() && text.lines.size() != most_lines; ++at) {
    const Measure& node = facts.measures[way[at]];
    if (node.total_ns < facts.total_ns() / least_share) break;
    if (at + 1 != way.size() && hands_on(facts, way[at], way[at + 1])) {
      ++passed;
      continue;
    }
    std::string line = ms_column(node.total_ns);
    line += right(as_percent(node.total_ns, facts.total_ns()), 8) + "  ";
    if (passed != 0) line += std::to_string(passed) + " skipped > ";
    passed = 0;
    line += id_text(way[at]) + " ";
    line += end_of(facts.lines.label(way[at]), page.room_behind(line));
    text.lines.push_back(at_place(line, facts.lines.place(way[at]), page));
  }
  text.title = "Slowest way down (skipped: wrappers that only hand on)";
  text.least = 3;
  text.left_out = 0;
  text.more = "cttool tree FILE";
  return text;
}

void way_json(const SummaryFacts& facts, JsonWriter& json) {
  json.key("slowest_way");
  json.begin_array();
  for (const NodeId id : slowest_way(facts)) {
    json.element();
    begin_node(json, facts, id);
    put_number(json, "total_ns", facts.measures[id].total_ns);
    put_number(json, "own_ns", facts.measures.own(id).ns);
    put_place(json, facts.trace, id);
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
