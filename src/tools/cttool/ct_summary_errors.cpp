// SPDX-License-Identifier: MIT
//
// Errors of PHP, those of one message and place together.
#include <algorithm>
#include <map>
#include <tuple>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

struct ErrorGroup {
  std::uint32_t number;
  Checkpoint::String message;
  NodeId first;
  std::int32_t count;
};

// In the order of their first ones.
std::vector<ErrorGroup> groups_of(const SummaryFacts& facts) {
  using Key = std::tuple<std::uint32_t, std::string_view, const unsigned char*, std::uint32_t>;
  std::map<Key, std::size_t> known;
  std::vector<ErrorGroup> groups;
  for (NodeId id = 0; id != facts.measures.node_count(); ++id) {
    if (facts.trace.type(id) != Node::Type::SCRIPT_ERROR) continue;
    const Node::Base node = facts.trace.node(id);
    const auto error = node.begin_as<Checkpoint::ScriptError>();
    if (!error) continue;
    const Checkpoint::String message = error->error_message();
    const Key key = {error->error_num(), message.view(), error->filename_place(), error->line_no()};
    const auto [place, is_new] = known.try_emplace(key, groups.size());
    if (is_new) groups.push_back({error->error_num(), message, id, 0});
    ++groups[place->second].count;
  }
  return groups;
}

std::string level_of(std::uint32_t number) {
  const std::string_view level = error_level(number);
  return level.empty() ? "error " + std::to_string(number) : std::string(level);
}

}  // namespace

SectionText errors_text(const SummaryFacts& facts, const PageSize& page) {
  constexpr std::size_t usual_lines = 10;
  constexpr std::size_t place_room = 24;
  SectionText text;
  if (facts.request.errors == 0) return text;
  std::map<std::uint32_t, std::int64_t> levels;
  const std::vector<ErrorGroup> groups = groups_of(facts);
  for (const ErrorGroup& group : groups) {
    levels[group.number] += group.count;
    std::string line = "  " + id_text(group.first) + " " + level_of(group.number);
    if (group.count > 1) line += " \xC3\x97 " + as_count(group.count);
    line += ": ";
    const std::size_t room = page.room_behind(line + std::string(place_room, ' '));
    line += shortened(group.message.view(), room);
    line = at_place(line, facts.lines.place(group.first), page);
    if (text.lines.size() == page.most(usual_lines)) {
      ++text.left_out;
    } else {
      text.lines.push_back(std::move(line));
    }
  }
  text.title = "PHP errors:";
  for (const auto& [number, count] : levels) {
    text.title += (text.title.back() == ':' ? " " : ", ") + as_count(count) + " ";
    text.title += level_of(number);
  }
  text.more = "cttool summary FILE --full";
  text.least = 2;
  return text;
}

void errors_json(const SummaryFacts& facts, JsonWriter& json) {
  json.key("errors");
  json.begin_array();
  for (const ErrorGroup& group : groups_of(facts)) {
    json.element();
    json.begin_object();
    put_number(json, "number", group.number);
    const std::string level(error_level(group.number));
    json.key("level");
    level.empty() ? json.null() : json.word(level);
    put_text(json, "message", group.message);
    put_place(json, facts.trace, group.first);
    put_id(json, "first", group.first);
    put_number(json, "count", group.count);
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
