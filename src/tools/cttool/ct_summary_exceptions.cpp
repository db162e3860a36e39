// SPDX-License-Identifier: MIT
//
// Exceptions: what they said, where they were made, which way they went.
#include <map>
#include <utility>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

constexpr std::size_t most_shown = 8;

std::string class_of(const Exception& exception) {
  return exception.class_entry != nullptr ? shown_text(exception.class_entry->name().view())
                                          : std::string("(unknown class)");
}

std::string short_class_of(const Exception& exception) {
  const std::string name = class_of(exception);
  const std::size_t at = name.rfind('\\');
  return at == std::string::npos ? name : name.substr(at + 1);
}

NodeId origin_of(const Exception& exception) {
  return exception.made_by != Storage::no_node ? exception.made_by : exception.first_thrower();
}

// Without namespaces and folders.
std::string short_label(const SummaryFacts& facts, NodeId id) {
  std::string label = facts.lines.label(id);
  constexpr std::string_view include = "include ";
  const std::size_t kept = label.starts_with(include) ? include.size() : 0;
  const std::size_t at = label.find_last_of("/\\");
  if (at != std::string::npos && at + 1 > kept) label.erase(kept, at + 1 - kept);
  return label;
}

// The calls that it went through, the first and the last ones if there are many.
std::string way_of(const SummaryFacts& facts, const Exception::Pass& pass) {
  constexpr std::size_t most = 3;
  std::string way;
  for (std::size_t i = 0; i != pass.calls.size(); ++i) {
    if (pass.calls.size() > most && i == most - 1) {
      i = pass.calls.size() - 1;
      way += " > \xE2\x80\xA6 " + std::to_string(pass.calls.size() - most) + " more";
    }
    if (i != 0) way += " > ";
    way += short_label(facts, pass.calls[i]);
  }
  return way;
}

std::string end_of_pass(const SummaryFacts& facts, const Exception::Pass& pass) {
  if (pass.is_uncaught) return "NOT CAUGHT";
  return "caught in " + short_label(facts, pass.caught_in);
}

// Without its id: equal ones come to one entry.
std::pair<std::string, std::string> lines_of(const SummaryFacts& facts,
                                             const Exception& exception) {
  constexpr std::size_t message_width = 300;
  constexpr std::size_t place_width = 26;
  std::string head = short_class_of(exception);
  if (exception.message.is_present()) {
    head += ": " + shortened(exception.message.view(), message_width);
    if (exception.message.is_cut()) head += "\xE2\x80\xA6";
  }
  const Exception::Pass& last = exception.passes.back();
  std::string way = "      ";
  const std::string place = end_of(facts.lines.place(origin_of(exception)), place_width);
  if (!place.empty()) way += "at " + place + ", ";
  way += end_of_pass(facts, last) + ", out of " + way_of(facts, last);
  if (exception.passes.size() > 1) {
    way += ", thrown again " + std::to_string(exception.passes.size() - 1) + " times";
  }
  return {std::move(head), std::move(way)};
}

struct Entry {
  NodeId first;
  std::int64_t count;
  std::string head;
  std::string way;
};

// What nobody caught explains most.
std::vector<Entry> entries_of(const SummaryFacts& facts) {
  std::vector<Entry> entries;
  std::map<std::pair<std::string, std::string>, std::size_t> known;
  for (const bool is_uncaught : {true, false}) {
    for (const Exception& exception : facts.thrown) {
      if (exception.is_uncaught() != is_uncaught) continue;
      auto lines = lines_of(facts, exception);
      const auto [place, is_new] = known.try_emplace(lines, entries.size());
      if (is_new) {
        entries.push_back({exception.first_thrower(), 0, lines.first, std::move(lines.second)});
      }
      ++entries[place->second].count;
    }
  }
  return entries;
}

}  // namespace

SectionText exceptions_text(const SummaryFacts& facts) {
  SectionText text;
  if (facts.thrown.empty()) return text;
  text.title = "Exceptions: " + as_count(static_cast<std::int64_t>(facts.thrown.size()));
  std::int64_t uncaught = 0;
  for (const Exception& exception : facts.thrown) uncaught += exception.is_uncaught() ? 1 : 0;
  if (uncaught != 0) text.title += ", " + as_count(uncaught) + " not caught";
  text.more = "cttool calls FILE --threw";
  for (const Entry& entry : entries_of(facts)) {
    if (text.lines.size() == 2 * most_shown) {
      ++text.left_out;
      continue;
    }
    std::string head = "  " + id_text(entry.first) + " ";
    if (entry.count > 1) head += "\xC3\x97 " + as_count(entry.count) + " ";
    text.lines.push_back(head + entry.head);
    text.lines.push_back(entry.way);
  }
  text.lines_each = 2;
  text.least = 4;
  return text;
}

void exceptions_json(const SummaryFacts& facts, JsonWriter& json) {
  json.key("exceptions");
  json.begin_array();
  for (const Exception& exception : facts.thrown) {
    json.element();
    json.begin_object();
    json.key("class");
    exception.class_entry != nullptr ? json.text(exception.class_entry->name().view())
                                     : json.null();
    put_number(json, "handle", exception.handle);
    put_text(json, "message", exception.message);
    put_id(json, "made_by", exception.made_by);
    put_place(json, facts.trace, origin_of(exception));
    json.key("previous");
    exception.previous >= 0 ? json.number(std::int64_t{exception.previous}) : json.null();
    json.key("uncaught");
    json.boolean(exception.is_uncaught());
    json.key("passes");
    json.begin_array();
    for (const Exception::Pass& pass : exception.passes) {
      json.element();
      json.begin_object();
      json.key("calls");
      json.begin_array();
      for (const NodeId id : pass.calls) {
        json.element();
        json.number(std::int64_t{id});
      }
      json.end_array();
      put_id(json, "caught_in", pass.is_uncaught ? Storage::no_node : pass.caught_in);
      json.end_object();
    }
    json.end_array();
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
