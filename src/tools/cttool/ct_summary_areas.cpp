// SPDX-License-Identifier: MIT
//
// Where own time went, by areas.
#include <algorithm>
#include <cmath>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

constexpr std::size_t user_areas = 7;
constexpr std::int64_t least_share = 300;  // parts of the whole

// All of them, most time first.
std::vector<Area> list_of(const Areas& found) {
  std::vector<Area> list = found.user;
  const auto add = [&](const Area& area, const char* name) {
    if (area.own_ns == 0 && area.calls == 0) return;
    list.push_back(area);
    list.back().name = name;
  };
  add(found.builtin, "(built-in functions)");
  add(found.includes, "(includes: compiling, top-level code)");
  add(found.writes, "(output)");
  add(found.request, "(PHP outside of scripts)");
  std::stable_sort(list.begin(), list.end(),
                   [](const Area& a, const Area& b) { return a.own_ns > b.own_ns; });
  return list;
}

std::string bar(std::int64_t part, std::int64_t whole) {
  constexpr double columns = 16;
  const double share = whole > 0 ? static_cast<double>(part) / static_cast<double>(whole) : 0;
  std::string blocks;
  auto eighths = std::lround(share * columns * 8);
  constexpr int full = 8;
  for (; eighths >= full; eighths -= full) blocks += "\xE2\x96\x88";
  if (eighths != 0) {
    blocks += "\xE2\x96";
    blocks += static_cast<char>(0x90 - eighths);  // from one eighth to seven
  }
  return blocks + std::string(static_cast<std::size_t>(columns) - shown_width(blocks), ' ');
}

}  // namespace

SectionText areas_text(const SummaryFacts& facts, const PageSize& page) {
  SectionText text;
  if (facts.total_ns() == 0) return text;
  const Areas found = areas(facts.trace, facts.measures, user_areas);
  text.title = "Own time by area";
  for (const Area& area : list_of(found)) {
    if (area.own_ns == 0) continue;
    if (area.own_ns < facts.total_ns() / least_share) {
      ++text.left_out;
      continue;
    }
    std::string line = ms_column(area.own_ns);
    line += right(as_percent(area.own_ns, facts.total_ns()), 8);
    line += "  " + bar(area.own_ns, facts.total_ns()) + "  ";
    const std::string name = shown_text(area.name);
    const std::size_t room = page.room_behind(line);
    line += name.starts_with('(') ? fitted(name, room) : end_of(name, room);
    text.lines.push_back(std::move(line));
  }
  text.least = 5;
  text.more = found.by == Areas::By::folder ? "cttool top FILE --user --of folder"
                                            : "cttool top FILE --user --of namespace";
  return text;
}

void areas_json(const SummaryFacts& facts, JsonWriter& json) {
  const Areas found = areas(facts.trace, facts.measures, user_areas);
  json.key("areas");
  json.begin_object();
  json.key("by");
  found.by == Areas::By::folder ? json.word("folder") : json.word("namespace");
  json.key("rows");
  json.begin_array();
  for (const Area& area : list_of(found)) {
    json.element();
    json.begin_object();
    put_text(json, "name", area.name);
    put_number(json, "own_ns", area.own_ns);
    put_number(json, "calls", area.calls);
    json.end_object();
  }
  json.end_array();
  json.end_object();
}

}  // namespace CT::Tool
