// SPDX-License-Identifier: MIT
//
// SQL at a glance: how much, how long, what was slowest and who asked for it.
#include <algorithm>

#include "ctmeasure/ct_elapsed.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

struct SqlSums {
  std::int64_t queries = 0;  // without what only prepares
  std::int64_t total_ns = 0;
  std::int64_t unknown = 0;  // without a text
};

SqlSums sums_of(const SummaryFacts& facts) {
  SqlSums sums;
  for (const Query& query : facts.said) {
    if (!query.only_prepares) ++sums.queries;
    if (query.text.data == nullptr) ++sums.unknown;
    sums.total_ns = bounded_sum(sums.total_ns, facts.measures[query.id].total_ns);
  }
  return sums;
}

// Most time first.
std::vector<LikeQueries> statements_of(const SummaryFacts& facts) {
  std::vector<LikeQueries> groups = like_queries(facts.said, facts.measures, false);
  std::stable_sort(groups.begin(), groups.end(), [](const LikeQueries& a, const LikeQueries& b) {
    return a.total_ns > b.total_ns;
  });
  return groups;
}

const Query& query_of(const SummaryFacts& facts, const LikeQueries& group, NodeId id) {
  for (const std::size_t place : group.which) {
    if (facts.said[place].id == id) return facts.said[place];
  }
  return facts.said[group.which.front()];
}

// Of the slowest query of a group: which that is, and who asked for it.
std::string from_caller(const SummaryFacts& facts, const Query& query, const PageSize& page) {
  const NodeId caller = facts.trace.parent(query.entered_by);
  constexpr std::size_t place_room = 24;
  std::string line = "      slowest ";
  line += id_text(query.id) + " from ";
  const std::size_t room = page.room_behind(line + std::string(place_room, ' '));
  line += caller == Storage::no_node ? "nowhere" : end_of(short_label(facts, caller), room);
  return at_place(line, facts.lines.place(query.entered_by), page);
}

}  // namespace

SectionText sql_text(const SummaryFacts& facts, const PageSize& page) {
  constexpr std::size_t usual_shown = 4;
  SectionText text;
  if (facts.said.empty()) return text;
  const SqlSums sums = sums_of(facts);
  const std::vector<LikeQueries> groups = statements_of(facts);
  text.title = "SQL: " + as_count(sums.queries) + " queries, ";
  text.title += as_count(static_cast<std::int64_t>(groups.size())) + " different, ";
  text.title += as_ms(sums.total_ns) + " ms (" + as_percent(sums.total_ns, facts.total_ns()) + ")";
  for (const LikeQueries& group : groups) {
    if (text.lines.size() == 2 * page.most(usual_shown)) break;
    std::string line = ms_column(group.total_ns);
    line += right("\xC3\x97 " + as_count(static_cast<std::int64_t>(group.which.size())), 7) + "  ";
    line += group.text.empty() ? "(text not known)" : shortened(group.text, page.columns);
    text.lines.push_back(std::move(line));
    text.lines.push_back(from_caller(facts, query_of(facts, group, group.slowest), page));
  }
  text.least = 2;
  text.lines_each = 2;
  text.left_out = groups.size() - text.lines.size() / 2;
  text.more = "cttool summary FILE --full";
  return text;
}

void sql_json(const SummaryFacts& facts, JsonWriter& json) {
  const SqlSums sums = sums_of(facts);
  json.key("sql");
  json.begin_object();
  put_number(json, "queries", sums.queries);
  put_number(json, "total_ns", sums.total_ns);
  put_number(json, "without_text", sums.unknown);
  json.key("statements");
  json.begin_array();
  for (const LikeQueries& group : statements_of(facts)) {
    json.element();
    json.begin_object();
    put_text(json, "text", group.text);
    put_number(json, "calls", static_cast<std::int64_t>(group.which.size()));
    put_number(json, "executions", group.executions);
    put_number(json, "total_ns", group.total_ns);
    put_id(json, "first", group.first);
    put_id(json, "slowest", group.slowest);
    json.end_object();
  }
  json.end_array();
  json.key("calls");
  json.begin_array();
  for (const Query& query : facts.said) {
    json.element();
    json.begin_object();
    put_id(json, "id", query.id);
    put_name(json, facts, query.id);
    put_text(json, "text", query.text);
    put_id(json, "prepared_by", query.prepared_by);
    put_number(json, "total_ns", facts.measures[query.id].total_ns);
    put_id(json, "caller", facts.trace.parent(query.entered_by));
    put_place(json, facts.trace, query.entered_by);
    json.end_object();
  }
  json.end_array();
  json.end_object();
}

}  // namespace CT::Tool
