// SPDX-License-Identifier: MIT
//
// The functions that took the most time by themselves.
#include <algorithm>

#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

struct Hot {
  std::int32_t function;
  ProfileRow sums;
};

// Those that were called, most own time first.
std::vector<Hot> hot_functions(const SummaryFacts& facts) {
  std::vector<Hot> list;
  const auto rows = profile_of_functions(facts.trace, facts.measures);
  for (std::size_t i = 0; i != rows.size(); ++i) {
    if (rows[i].calls != 0) list.push_back({static_cast<std::int32_t>(i), rows[i]});
  }
  std::stable_sort(list.begin(), list.end(),
                   [](const Hot& a, const Hot& b) { return a.sums.own_ns > b.sums.own_ns; });
  return list;
}

std::string name_of(const SummaryFacts& facts, const Hot& hot) {
  return CT::name_of(facts.trace.functions()[static_cast<std::size_t>(hot.function)]);
}

}  // namespace

SectionText hot_text(const SummaryFacts& facts) {
  constexpr std::size_t most_lines = 8;
  SectionText text;
  if (facts.total_ns() == 0) return text;
  const std::vector<Hot> list = hot_functions(facts);
  for (const Hot& hot : list) {
    if (text.lines.size() == most_lines || hot.sums.own_ns == 0) break;
    std::string line = ms_column(hot.sums.own_ns);
    line += right(as_percent(hot.sums.own_ns, facts.total_ns()), 8);
    line += right(as_count(hot.sums.calls), 11) + (hot.sums.calls == 1 ? " call   " : " calls  ");
    line += end_of(shown_text(name_of(facts, hot)), 37);
    text.lines.push_back(std::move(line));
  }
  text.title = "Hottest functions, by own time";
  text.least = 4;
  text.left_out = list.size() - text.lines.size();
  text.more = "cttool top FILE";
  return text;
}

void hot_json(const SummaryFacts& facts, JsonWriter& json) {
  json.key("functions");
  json.begin_array();
  for (const Hot& hot : hot_functions(facts)) {
    json.element();
    json.begin_object();
    put_text(json, "name", name_of(facts, hot));
    put_number(json, "own_ns", hot.sums.own_ns);
    put_number(json, "total_ns", hot.sums.total_ns);
    put_number(json, "calls", hot.sums.calls);
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
