// SPDX-License-Identifier: MIT
//
// The functions, and the files that were included, that took the most time by themselves.
#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_closure.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

// A function, or a file that was included.
struct Hot {
  ProfileRow sums;
  std::int32_t function;    // -1 for a file
  Checkpoint::String path;  // of a file
};

struct HotList {
  std::vector<Hot> rows;  // what was called or included, most own time first
  std::size_t functions = 0;
};

HotList hot_list(const SummaryFacts& facts) {
  const auto functions = static_cast<std::int32_t>(facts.trace.functions().size());
  std::vector<Checkpoint::String> paths;
  std::unordered_map<std::string_view, std::int32_t> known;
  const auto group = [&](NodeId id) {
    if (facts.measures[id].function >= 0) return facts.measures[id].function;
    const auto include = facts.trace.node(id).begin_as<Checkpoint::IncludeCall>();
    if (!include) return no_group;
    const auto next = functions + static_cast<std::int32_t>(paths.size());
    const auto [place, is_new] = known.try_emplace(include->include().view(), next);
    if (is_new) paths.push_back(include->include());
    return place->second;
  };
  HotList list;
  if (facts.is_empty()) return list;
  const auto sums = profile(facts.trace, facts.measures, group, 0, facts.measures.node_count() - 1);
  for (std::size_t i = 0; i != sums.size(); ++i) {
    if (sums[i].calls == 0) continue;
    const auto function = static_cast<std::int32_t>(i);
    if (function < functions) {
      ++list.functions;
      list.rows.push_back({sums[i], function, {}});
    } else {
      list.rows.push_back({sums[i], -1, paths[i - static_cast<std::size_t>(functions)]});
    }
  }
  std::stable_sort(list.rows.begin(), list.rows.end(),
                   [](const Hot& a, const Hot& b) { return a.sums.own_ns > b.sums.own_ns; });
  return list;
}

std::string name_of(const SummaryFacts& facts, const Hot& hot) {
  return CT::name_of(facts.trace.functions()[static_cast<std::size_t>(hot.function)]);
}

// All closures have one name: it is the place that tells them apart.
std::string shown_name(const SummaryFacts& facts, const Hot& hot, std::size_t room) {
  if (hot.function < 0) {
    constexpr std::string_view include = "include ";
    std::string name(include);
    return name += end_of(shown_text(hot.path.view()), room - std::min(room, include.size()));
  }
  const auto& function = facts.trace.functions()[static_cast<std::size_t>(hot.function)];
  const std::string name = CT::name_of(function);
  const std::string file = function.filename().to_string().toStdString();
  const std::string place = closure_place(name, file, function.line_no());
  if (place.empty()) return end_of(shown_text(name), room);
  std::string behind = " ";
  behind += end_of(shown_text(place), room / 2);
  return end_of(shown_text(closure_name(name)), room - shown_width(behind)) + behind;
}

}  // namespace

SectionText hot_text(const SummaryFacts& facts, const PageSize& page) {
  constexpr std::size_t most_lines = 8;
  SectionText text;
  if (facts.total_ns() == 0) return text;
  const HotList list = hot_list(facts);
  text.left_out = list.functions;
  for (const Hot& hot : list.rows) {
    if (text.lines.size() == most_lines || hot.sums.own_ns == 0) break;
    std::string line = ms_column(hot.sums.own_ns);
    line += right(as_percent(hot.sums.own_ns, facts.total_ns()), 8);
    const bool is_function = hot.function >= 0;
    line += right(as_count(hot.sums.calls), 9) + (is_function ? " call" : " time");
    line += hot.sums.calls == 1 ? "   " : "s  ";
    line += shown_name(facts, hot, page.room_behind(line));
    text.lines.push_back(std::move(line));
    if (is_function) --text.left_out;
  }
  text.title = "Hottest functions and files, by own time";
  text.least = 4;
  text.more = "cttool top FILE";
  return text;
}

void hot_json(const SummaryFacts& facts, JsonWriter& json) {
  const HotList list = hot_list(facts);
  for (const bool are_functions : {true, false}) {
    json.key(are_functions ? "functions" : "includes");
    json.begin_array();
    for (const Hot& hot : list.rows) {
      if ((hot.function >= 0) != are_functions) continue;
      json.element();
      json.begin_object();
      are_functions ? put_text(json, "name", name_of(facts, hot))
                    : put_text(json, "path", hot.path);
      put_number(json, "own_ns", hot.sums.own_ns);
      put_number(json, "total_ns", hot.sums.total_ns);
      put_number(json, are_functions ? "calls" : "times", hot.sums.calls);
      json.end_object();
    }
    json.end_array();
  }
}

}  // namespace CT::Tool
