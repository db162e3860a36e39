// SPDX-License-Identifier: MIT
//
// What never ended: where a request hung, or where its trace breaks off.
#include <algorithm>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

constexpr std::size_t usual_lines = 6;

// The open nodes inside of each other around the last one that has no end; the innermost first.
std::vector<NodeId> innermost_way(const SummaryFacts& facts) {
  NodeId id = facts.measures.node_count() - 1;
  while (id >= 0 && !facts.measures[id].has(Measure::open)) --id;
  std::vector<NodeId> way;
  for (; id != Storage::no_node; id = facts.trace.parent(id)) {
    if (facts.measures[id].has(Measure::open)) way.push_back(id);
  }
  return way;
}

NodeId exit_of(const SummaryFacts& facts) {
  for (NodeId id = 0; id != facts.measures.node_count(); ++id) {
    if (facts.trace.type(id) == Node::Type::SCRIPT_EXIT) return id;
  }
  return Storage::no_node;
}

}  // namespace

SectionText open_text(const SummaryFacts& facts, const PageSize& page) {
  SectionText text;
  if (facts.request.open == 0) return text;
  text.title = "Never ended: " + as_count(facts.request.open);
  text.more = "cttool calls FILE --open";
  const std::vector<NodeId> way = innermost_way(facts);
  const bool is_open = facts.measures[0].has(Measure::open);
  text.title += is_open ? ", the request itself among them; innermost first" : "; innermost first";
  for (const NodeId id : way) {
    if (text.lines.size() == page.most(usual_lines)) break;
    std::string line = ms_column(facts.measures[id].total_ns) + " open  " + id_text(id) + " ";
    line += end_of(facts.lines.label(id), page.room_behind(line));
    text.lines.push_back(at_place(line, facts.lines.place(id), page));
  }
  text.least = 2;
  text.left_out = static_cast<std::size_t>(facts.request.open) - text.lines.size();
  const NodeId exit = exit_of(facts);
  if (exit == Storage::no_node) return text;
  const std::string place = facts.lines.place(exit);
  text.lines.insert(text.lines.begin(),
                    at_place("the script ended itself by exit " + id_text(exit), place, page));
  return text;
}

void open_json(const SummaryFacts& facts, JsonWriter& json) {
  json.key("open");
  json.begin_array();
  for (NodeId id = 0; id != facts.measures.node_count(); ++id) {
    if (!facts.measures[id].has(Measure::open)) continue;
    json.element();
    begin_node(json, facts, id);
    put_number(json, "start_ns", facts.measures[id].start_ns);
    put_number(json, "total_ns", facts.measures[id].total_ns);
    put_place(json, facts.trace, id);
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
