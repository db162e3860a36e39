// SPDX-License-Identifier: MIT
//
// The sections of a summary. Each says one thing about a request, as a few lines and as members of
// a JSON document; what it has nothing to say about it leaves out.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "codetrace/render/ct_json.h"
#include "tools/cttool/ct_summary_facts.h"

namespace CT::Tool {

inline constexpr std::size_t page_lines = 60;
inline constexpr std::size_t page_columns = 80;

// As text. Lines may be of any width; they are cut.
struct SectionText {
  std::string title;               // empty: none
  std::vector<std::string> lines;  // none: the section is left out
  std::size_t least = 1;           // lines that stay, however little room there is
  std::size_t lines_each = 1;      // that belong together
  std::string more;                // what shows all of it, such as "cttool top FILE"
  std::size_t left_out = 0;        // things that have no line even with all the room there is
};

struct Section {
  SectionText (*text)(const SummaryFacts& facts);
  // Adds one member or more to the open object.
  void (*json)(const SummaryFacts& facts, JsonWriter& json);
};

// In the order in which they are printed.
std::span<const Section> sections();

SectionText request_text(const SummaryFacts& facts);
void request_json(const SummaryFacts& facts, JsonWriter& json);
SectionText open_text(const SummaryFacts& facts);
void open_json(const SummaryFacts& facts, JsonWriter& json);
SectionText exceptions_text(const SummaryFacts& facts);
void exceptions_json(const SummaryFacts& facts, JsonWriter& json);
SectionText errors_text(const SummaryFacts& facts);
void errors_json(const SummaryFacts& facts, JsonWriter& json);
SectionText headers_text(const SummaryFacts& facts);
void headers_json(const SummaryFacts& facts, JsonWriter& json);
SectionText areas_text(const SummaryFacts& facts);
void areas_json(const SummaryFacts& facts, JsonWriter& json);
SectionText hot_text(const SummaryFacts& facts);
void hot_json(const SummaryFacts& facts, JsonWriter& json);
SectionText way_text(const SummaryFacts& facts);
void way_json(const SummaryFacts& facts, JsonWriter& json);
SectionText again_text(const SummaryFacts& facts);
void again_json(const SummaryFacts& facts, JsonWriter& json);
SectionText sql_text(const SummaryFacts& facts);
void sql_json(const SummaryFacts& facts, JsonWriter& json);
SectionText memory_text(const SummaryFacts& facts);
void memory_json(const SummaryFacts& facts, JsonWriter& json);
SectionText cut_text(const SummaryFacts& facts);
void cut_json(const SummaryFacts& facts, JsonWriter& json);

// What several of them need.

// A figure to the right of this many columns.
std::string right(const std::string& text, std::size_t columns);
// "  #123".
std::string id_text(NodeId id);
// Milliseconds, to the right of ten columns.
std::string ms_column(std::int64_t nanoseconds);
// A line with " at /file.php:12" behind it, the end of that if there is no more room on the page;
// the line alone if there is none at all.
std::string at_place(const std::string& line, const std::string& place);
// A call with its arguments and without what came of it.
std::string call_text(const SummaryFacts& facts, NodeId id);
// A long text's beginning, for a place in a line.
std::string shortened(std::string_view text, std::size_t width);
// The last `width` characters at most of a path or a name, of which the beginning says least; from
// the beginning of a part of it, if one is near.
std::string end_of(const std::string& path, std::size_t width);

// Members of JSON objects.
void put_id(JsonWriter& json, std::string_view key, NodeId id);
void put_text(JsonWriter& json, std::string_view key, const Checkpoint::String& text);
void put_number(JsonWriter& json, std::string_view key, std::int64_t number);
void put_text(JsonWriter& json, std::string_view key, const std::string& text);
// "file" and "line" of a node; null where they are not known.
void put_place(JsonWriter& json, const Trace& trace, NodeId id);
// "function": its name; null for what is no call.
void put_name(JsonWriter& json, const SummaryFacts& facts, NodeId id);
// Begins the object of a node: "id", "kind" and "function".
void begin_node(JsonWriter& json, const SummaryFacts& facts, NodeId id);

}  // namespace CT::Tool
