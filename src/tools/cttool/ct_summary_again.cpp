// SPDX-License-Identifier: MIT
//
// What was said again and again: equal calls, and SQL queries that are alike from one place.
#include <algorithm>
#include <unordered_map>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

struct Again {
  NodeId first;
  std::int64_t calls;
  std::int64_t total_ns;
  std::string text;  // of a query; else empty

  // What all but one of them took, as if each took the same.
  [[nodiscard]] std::int64_t spare_ns() const { return total_ns - total_ns / calls; }
};

// By its first call's arguments: what was cut may differ.
bool has_cut_arguments(const Trace& trace, NodeId id) {
  const auto call = trace.node(id).begin_as<Checkpoint::FunctionCall>();
  Checkpoint::ValueTape tape;
  static_cast<void>(call->args(tape));
  for (Checkpoint::ValueTape::Index i = 0; i != tape.size(); ++i) {
    if (tape.is_cut(i) || tape.string(i).is_cut()) return true;
  }
  return false;
}

std::vector<LikeQueries> loops_of(const SummaryFacts& facts) {
  std::vector<LikeQueries> loops = like_queries(facts.said, facts.measures, true);
  std::erase_if(
      loops, [](const LikeQueries& group) { return group.which.size() < 2 || group.text.empty(); });
  return loops;
}

// Both kinds, as far as they cost something, those first that cost most. Equal calls inside of
// others that are listed, and equal queries of which more are alike, are left out.
std::vector<Again> list_of(const SummaryFacts& facts) {
  constexpr std::int64_t least_share = 200;  // parts of the whole
  std::vector<Again> list;
  const auto add = [&](Again again) {
    if (again.spare_ns() == 0 || again.spare_ns() < facts.total_ns() / least_share) return;
    list.push_back(std::move(again));
  };
  std::unordered_map<NodeId, std::int64_t> alike;
  for (const LikeQueries& group : loops_of(facts)) {
    add({group.first, group.executions, group.total_ns, group.text});
    for (const std::size_t place : group.which) {
      alike[facts.said[place].id] = group.executions;
    }
  }
  for (const Repeat& repeat : facts.repeated) {
    const auto group = alike.find(repeat.first);
    if (group != alike.end() && group->second >= repeat.calls) continue;
    add({repeat.first, repeat.calls, repeat.total_ns, {}});
  }
  std::stable_sort(list.begin(), list.end(),
                   [](const Again& a, const Again& b) { return a.spare_ns() > b.spare_ns(); });
  return list;
}

bool lies_in_one_of(const SummaryFacts& facts, NodeId id, const std::vector<NodeId>& listed) {
  return std::any_of(listed.begin(), listed.end(),
                     [&](NodeId around) { return around < id && id <= facts.trace.last(around); });
}

}  // namespace

SectionText again_text(const SummaryFacts& facts) {
  constexpr std::size_t most_lines = 7;
  SectionText text;
  std::vector<NodeId> listed;
  for (const Again& again : list_of(facts)) {
    if (lies_in_one_of(facts, again.first, listed)) continue;
    if (text.lines.size() == most_lines) {
      ++text.left_out;
      continue;
    }
    listed.push_back(again.first);
    std::string line = ms_column(again.total_ns);
    line += right("\xC3\x97 " + as_count(again.calls), 9) + "  " + id_text(again.first) + " ";
    line += again.text.empty() ? call_text(facts, again.first) : shortened(again.text, 80);
    if (again.text.empty() && has_cut_arguments(facts.trace, again.first)) {
      line = fitted(line, 66) + " (cut values)";
    }
    text.lines.push_back(std::move(line));
  }
  text.title = "Again and again: equal calls, and like SQL from one place (#: the first)";
  text.least = 3;
  text.more = "cttool sql FILE 'select * from repeats'";
  return text;
}

void again_json(const SummaryFacts& facts, JsonWriter& json) {
  json.key("repeats");
  json.begin_array();
  for (const Repeat& repeat : facts.repeated) {
    json.element();
    json.begin_object();
    put_id(json, "first", repeat.first);
    put_name(json, facts, repeat.first);
    put_number(json, "calls", repeat.calls);
    put_number(json, "total_ns", repeat.total_ns);
    json.key("cut");
    json.boolean(has_cut_arguments(facts.trace, repeat.first));
    json.end_object();
  }
  json.end_array();
  json.key("like_queries");
  json.begin_array();
  for (const LikeQueries& group : loops_of(facts)) {
    json.element();
    json.begin_object();
    put_id(json, "first", group.first);
    put_text(json, "text", group.text);
    put_number(json, "calls", group.executions);
    put_number(json, "total_ns", group.total_ns);
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
