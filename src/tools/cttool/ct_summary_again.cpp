// SPDX-License-Identifier: MIT
//
// What was said again and again: equal calls, and SQL queries that are alike from one place.
#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <utility>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

struct Again {
  NodeId first;
  std::int64_t calls;
  std::int64_t spare_ns;
  const char* what;
  std::string text;  // of a query; else empty
};

const char* words_of(Results results) {
  switch (results) {
    case Results::same: return "same result";
    case Results::handle: return "same handle";
    case Results::none: return "no result";
    case Results::unknown: return "result unknown";
    case Results::differ: return "results differ";
  }
  return "";
}

bool has_cut(const Checkpoint::ValueTape& tape) {
  for (Checkpoint::ValueTape::Index i = 0; i != tape.size(); ++i) {
    if (tape.is_cut(i) || tape.string(i).is_cut()) return true;
  }
  return false;
}

// By its first call's arguments and result: what was cut may differ.
bool has_cut_values(const Trace& trace, NodeId id) {
  const Node::Base node = trace.node(id);
  Checkpoint::ValueTape tape;
  static_cast<void>(node.begin_as<Checkpoint::FunctionCall>()->args(tape));
  if (has_cut(tape)) return true;
  const auto end = node.end_as<Checkpoint::EndWithValue>();
  if (!end) return false;
  static_cast<void>(end->value(tape));
  return has_cut(tape);
}

std::int64_t spare_of(const SummaryFacts& facts, const LikeQueries& group) {
  return group.total_ns - facts.measures[group.slowest].total_ns;
}

// Those with most to spare first.
std::vector<LikeQueries> loops_of(const SummaryFacts& facts) {
  std::vector<LikeQueries> loops = like_queries(facts.said, facts.measures, true);
  std::erase_if(
      loops, [](const LikeQueries& group) { return group.which.size() < 2 || group.text.empty(); });
  std::stable_sort(loops.begin(), loops.end(), [&](const LikeQueries& a, const LikeQueries& b) {
    return spare_of(facts, a) > spare_of(facts, b);
  });
  return loops;
}

// Both kinds, as far as they cost something, as repeats are ranked. Equal queries of which more are
// alike are left out.
std::vector<Again> list_of(const SummaryFacts& facts) {
  constexpr std::int64_t least_share = 100;  // parts of the whole
  std::vector<Again> list;
  const auto add = [&](Again again) {
    if (again.spare_ns == 0 || again.spare_ns < facts.total_ns() / least_share) return;
    list.push_back(std::move(again));
  };
  std::unordered_map<NodeId, std::int64_t> alike;
  for (const LikeQueries& group : loops_of(facts)) {
    add({group.first, group.executions, spare_of(facts, group), "like SQL", group.text});
    for (const std::size_t place : group.which) {
      alike[facts.said[place].id] = group.executions;
    }
  }
  const char* const last = words_of(Results::differ);
  for (const Repeat& repeat : facts.repeated) {
    const auto group = alike.find(repeat.first);
    if (group != alike.end() && group->second >= repeat.calls) continue;
    add({repeat.first, repeat.calls, repeat.spare_ns(), words_of(repeat.results), {}});
  }
  std::stable_sort(list.begin(), list.end(), [&](const Again& a, const Again& b) {
    const auto rank = [&](const Again& again) {
      return std::pair(again.what == last, -again.spare_ns);
    };
    return rank(a) < rank(b);
  });
  return list;
}

bool lies_in_one_of(const SummaryFacts& facts, NodeId id, const std::vector<NodeId>& listed) {
  return std::any_of(listed.begin(), listed.end(),
                     [&](NodeId around) { return around < id && id <= facts.trace.last(around); });
}

}  // namespace

SectionText again_text(const SummaryFacts& facts, const PageSize& page) {
  constexpr std::size_t most_lines = 7;
  constexpr std::size_t count_columns = 9;
  constexpr std::size_t what_columns = 16;
  constexpr std::string_view cut_words = " (cut values)";
  SectionText text;
  std::vector<NodeId> listed;
  for (const Again& again : list_of(facts)) {
    if (lies_in_one_of(facts, again.first, listed)) continue;
    if (text.lines.size() == most_lines) {
      ++text.left_out;
      continue;
    }
    listed.push_back(again.first);
    std::string line = ms_column(again.spare_ns);
    line += right("\xC3\x97 " + as_count(again.calls), count_columns) + "  ";
    line += again.what;
    line.append(what_columns - std::strlen(again.what), ' ').append(id_text(again.first)) += " ";
    const bool is_cut = again.text.empty() && has_cut_values(facts.trace, again.first);
    if (again.text.empty()) {
      line += call_text(facts, again.first, page);
    } else {
      line += shortened(again.text, page.columns);
    }
    if (is_cut) line = fitted(line, page.columns - cut_words.size()).append(cut_words);
    text.lines.push_back(std::move(line));
  }
  text.title = "Again and again: equal calls (ms: all but the slowest; #: the first)";
  text.least = 3;
  text.more = "cttool sql FILE 'select * from repeats limit 50'";
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
    put_number(json, "slowest_ns", repeat.slowest_ns);
    put_number(json, "spare_ns", repeat.spare_ns());
    json.key("results");
    json.word(word_of(repeat.results));
    json.key("cut");
    json.boolean(has_cut_values(facts.trace, repeat.first));
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
    put_number(json, "spare_ns", spare_of(facts, group));
    put_id(json, "slowest", group.slowest);
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
