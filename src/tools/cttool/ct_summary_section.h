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

// How much there is room for. Where output is no terminal, what is fit for a ticket.
struct PageSize {
  static constexpr std::size_t any = std::size_t{1} << 30;  // more than there ever is

  std::size_t lines = 60;
  std::size_t columns = 80;

  // How many things a list shows that is no longer than `usual` on a page.
  [[nodiscard]] std::size_t most(std::size_t usual) const { return lines == any ? any : usual; }
  // Columns behind what stands in a line already, or a few where there are none.
  [[nodiscard]] std::size_t room_behind(const std::string& line) const;
};

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
  SectionText (*text)(const SummaryFacts& facts, const PageSize& page);
  // Adds one member or more to the open object.
  void (*json)(const SummaryFacts& facts, JsonWriter& json);
};

// In the order in which they are printed.
std::span<const Section> sections();

SectionText request_text(const SummaryFacts& facts, const PageSize& page);
void request_json(const SummaryFacts& facts, JsonWriter& json);
SectionText open_text(const SummaryFacts& facts, const PageSize& page);
void open_json(const SummaryFacts& facts, JsonWriter& json);
SectionText exceptions_text(const SummaryFacts& facts, const PageSize& page);
void exceptions_json(const SummaryFacts& facts, JsonWriter& json);
SectionText errors_text(const SummaryFacts& facts, const PageSize& page);
void errors_json(const SummaryFacts& facts, JsonWriter& json);
SectionText headers_text(const SummaryFacts& facts, const PageSize& page);
void headers_json(const SummaryFacts& facts, JsonWriter& json);
SectionText areas_text(const SummaryFacts& facts, const PageSize& page);
void areas_json(const SummaryFacts& facts, JsonWriter& json);
SectionText hot_text(const SummaryFacts& facts, const PageSize& page);
void hot_json(const SummaryFacts& facts, JsonWriter& json);
SectionText way_text(const SummaryFacts& facts, const PageSize& page);
void way_json(const SummaryFacts& facts, JsonWriter& json);
SectionText again_text(const SummaryFacts& facts, const PageSize& page);
void again_json(const SummaryFacts& facts, JsonWriter& json);
SectionText sql_text(const SummaryFacts& facts, const PageSize& page);
void sql_json(const SummaryFacts& facts, JsonWriter& json);
SectionText memory_text(const SummaryFacts& facts, const PageSize& page);
void memory_json(const SummaryFacts& facts, JsonWriter& json);
SectionText cut_text(const SummaryFacts& facts, const PageSize& page);
void cut_json(const SummaryFacts& facts, JsonWriter& json);

// Whether the last of them says anything.
bool has_cuts(const SummaryFacts& facts);

// What several of them need.

// A figure to the right of this many columns.
std::string right(const std::string& text, std::size_t columns);
// "  #123".
std::string id_text(NodeId id);
// Milliseconds, to the right of ten columns.
std::string ms_column(std::int64_t nanoseconds);
// A line with " at " and a place behind it, the end of that if there is no more room on the page;
// the line alone if there is none at all.
std::string at_place(const std::string& line, const std::string& place, const PageSize& page);
// What a node is called, without namespaces and folders.
std::string short_label(const SummaryFacts& facts, NodeId id);
// A call, so called, with its arguments and without what came of it.
std::string call_text(const SummaryFacts& facts, NodeId id, const PageSize& page);

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
