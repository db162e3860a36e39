// SPDX-License-Identifier: MIT
//
// Where memory was highest, and where on the way down to it it had grown.
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

// The nodes from the request down to the peak, which is the last of them.
std::vector<NodeId> way_to_peak(const SummaryFacts& facts) {
  if (!facts.request.memory_peak) return {};
  std::vector<NodeId> way = facts.lines.way_to(facts.request.peak_node);
  way.push_back(facts.request.peak_node);
  return way;
}

// By how much memory had grown in a node when the next one on the way began, or the peak came.
std::vector<std::int64_t> growth_along(const SummaryFacts& facts, const std::vector<NodeId>& way) {
  std::vector<std::int64_t> growth(way.size(), 0);
  auto next = static_cast<double>(facts.request.memory_peak.value_or(0));
  for (std::size_t i = way.size(); i-- != 0;) {
    const Measure& node = facts.measures[way[i]];
    if (!node.has(Measure::has_memory)) continue;
    const auto begin = static_cast<double>(node.memory);
    constexpr double most = 9e18;  // any file may say anything
    const double grown = next - begin;
    growth[i] = static_cast<std::int64_t>(grown > most ? most : grown < -most ? -most : grown);
    next = begin;
  }
  return growth;
}

}  // namespace

SectionText memory_text(const SummaryFacts& facts, const PageSize& page) {
  constexpr std::size_t most_lines = 6;
  constexpr std::int64_t least_share = 12;  // parts of all growth
  SectionText text;
  const std::vector<NodeId> way = way_to_peak(facts);
  if (way.empty()) return text;
  const std::vector<std::int64_t> growth = growth_along(facts, way);
  const double all = static_cast<double>(*facts.request.memory_peak) -
                     static_cast<double>(facts.request.memory.value_or(0));
  text.title = "Memory: " + as_bytes(static_cast<std::int64_t>(*facts.request.memory_peak));
  text.title += " at most, in " + id_text(facts.request.peak_node);
  text.title += ". Growth on the way there:";
  for (std::size_t i = 0; i != way.size(); ++i) {
    const bool is_last = i + 1 == way.size();
    if (!is_last && (text.lines.size() + 1 >= most_lines ||
                     static_cast<double>(growth[i]) * least_share < all || growth[i] <= 0)) {
      continue;
    }
    std::string bytes = growth[i] > 0 ? "+" : "";
    std::string line = right(bytes.append(as_bytes(growth[i])), 13);
    line.append("  ").append(id_text(way[i])).append(" ");
    line += end_of(facts.lines.label(way[i]), page.room_behind(line));
    text.lines.push_back(at_place(line, facts.lines.place(way[i]), page));
  }
  text.more = "cttool top FILE --by memory";
  return text;
}

void memory_json(const SummaryFacts& facts, JsonWriter& json) {
  const std::vector<NodeId> way = way_to_peak(facts);
  const std::vector<std::int64_t> growth = growth_along(facts, way);
  json.key("memory_peak_way");
  json.begin_array();
  for (std::size_t i = 0; i != way.size(); ++i) {
    json.element();
    begin_node(json, facts, way[i]);
    put_number(json, "growth", growth[i]);
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
