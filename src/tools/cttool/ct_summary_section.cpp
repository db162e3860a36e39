// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_summary_section.h"

#include <algorithm>
#include <array>

#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

std::span<const Section> sections() {
  static constexpr std::array table = {
      Section{request_text, request_json},
      Section{open_text, open_json},
      Section{exceptions_text, exceptions_json},
      Section{errors_text, errors_json},
      Section{headers_text, headers_json},
      Section{areas_text, areas_json},
      Section{hot_text, hot_json},
      Section{way_text, way_json},
      Section{again_text, again_json},
      Section{sql_text, sql_json},
      Section{memory_text, memory_json},
      Section{cut_text, cut_json},
  };
  return table;
}

std::size_t PageSize::room_behind(const std::string& line) const {
  constexpr std::size_t few = 14;
  const std::size_t used = shown_width(line);
  return columns > used + few ? columns - used : few;
}

std::string right(const std::string& text, std::size_t columns) {
  const std::size_t width = shown_width(text);
  return width < columns ? std::string(columns - width, ' ') + text : text;
}

std::string id_text(NodeId id) {
  std::string text = "#";
  return text.append(std::to_string(id));
}

std::string ms_column(std::int64_t nanoseconds) {
  constexpr std::size_t columns = 10;
  return right(as_ms(nanoseconds), columns) + " ms";
}

std::string at_place(const std::string& line, const std::string& place, const PageSize& page) {
  constexpr std::size_t least = 14;
  constexpr std::string_view word = " at ";
  const std::size_t used = shown_width(line) + word.size();
  if (place.empty() || used + std::min(least, shown_width(place)) > page.columns) return line;
  std::string text = line;
  return text.append(word).append(end_of(place, page.columns - used));
}

std::string short_label(const SummaryFacts& facts, NodeId id) {
  const std::string label = facts.lines.label(id);
  constexpr std::string_view include = "include ";
  constexpr std::string_view member = "::";
  std::string text;
  std::string_view left = label;
  const auto keep = [&](std::string_view mark) {
    const std::size_t at = left.find(mark);
    if (at == std::string_view::npos) return;
    const std::string_view part = left.substr(0, at);
    text.append(part, part.rfind('\\') + 1).append(mark);
    left.remove_prefix(at + mark.size());
  };
  const bool is_include = label.starts_with(include);
  keep(is_include ? include : member);
  return text.append(left, left.rfind(is_include ? '/' : '\\') + 1);
}

std::string call_text(const SummaryFacts& facts, NodeId id, const PageSize& page) {
  const Node::Base node = facts.trace.node(id);
  std::string text = short_label(facts, id);
  const auto call = node.begin_as<Checkpoint::FunctionCall>();
  if (!call) return text;
  MemoryWriter arguments;
  Checkpoint::ValueTextWriter writer;
  auto values = call->arg_values();
  writer.write_all(values, arguments, Checkpoint::ValueTextWriter::Form::escaped);
  text += "(";
  text += shortened(arguments.view(), page.columns);
  return text += ")";
}

void put_id(JsonWriter& json, std::string_view key, NodeId id) {
  json.key(key);
  id == Storage::no_node ? json.null() : json.number(std::int64_t{id});
}

void put_number(JsonWriter& json, std::string_view key, std::int64_t number) {
  json.key(key);
  json.number(number);
}

void put_text(JsonWriter& json, std::string_view key, const Checkpoint::String& text) {
  json.key(key);
  if (text.data == nullptr) return json.null();
  json.text(text.view(), text.is_cut() ? Checkpoint::String::cut_marker : "");
}

void put_text(JsonWriter& json, std::string_view key, const std::string& text) {
  json.key(key);
  json.text(text);
}

void put_place(JsonWriter& json, const Trace& trace, NodeId id) {
  const Node::Base node = trace.node(id);
  put_text(json, "file", node.begin().filename());
  json.key("line");
  node.begin().has_location() ? json.number(std::int64_t{node.begin().line_no()}) : json.null();
}

void put_name(JsonWriter& json, const SummaryFacts& facts, NodeId id) {
  const std::int32_t function = id != Storage::no_node ? facts.measures[id].function : -1;
  json.key("function");
  if (function < 0) return json.null();
  json.text(name_of(facts.trace.functions()[static_cast<std::size_t>(function)]));
}

void begin_node(JsonWriter& json, const SummaryFacts& facts, NodeId id) {
  json.begin_object();
  put_id(json, "id", id);
  json.key("kind");
  json.word(kind_of(facts.trace.type(id)));
  put_name(json, facts, id);
}

}  // namespace CT::Tool
