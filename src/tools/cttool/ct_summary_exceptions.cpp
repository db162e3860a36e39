// SPDX-License-Identifier: MIT
//
// Exceptions: what they said, where they were made, which way they went.
#include <array>
#include <map>
#include <utility>

#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

constexpr std::size_t usual_shown = 8;
constexpr std::size_t lines_each = 3;
constexpr std::string_view indentation = "      ";

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

// The calls that it left behind the first one, as many as say something.
std::string passed_through(const SummaryFacts& facts, const Exception::Pass& pass) {
  constexpr std::size_t most = 3;
  std::string way;
  for (std::size_t i = 1; i != pass.calls.size(); ++i) {
    if (i > most) {
      way += ", " + as_count(static_cast<std::int64_t>(pass.calls.size() - i)) + " more";
      break;
    }
    way += (i == 1 ? ", through " : ", ") + short_label(facts, pass.calls[i]);
  }
  return way;
}

std::string origin_line(const SummaryFacts& facts, const Exception& exception,
                        const PageSize& page) {
  std::string line(indentation);
  line += "thrown by " + short_label(facts, exception.first_thrower());
  return at_place(line, facts.lines.place(origin_of(exception)), page);
}

// The end stands first: a long way may be cut.
std::string end_line(const SummaryFacts& facts, const Exception& exception) {
  const Exception::Pass& last = exception.passes.back();
  std::string line(indentation);
  line += last.is_uncaught ? "NOT CAUGHT" : "caught in " + short_label(facts, last.caught_in);
  if (exception.passes.size() > 1) {
    line += ", thrown again by " + short_label(facts, last.calls.front());
    if (exception.passes.size() > 2) line += " and others";
  }
  return line + passed_through(facts, last);
}

std::string head_of(const Exception& exception, const PageSize& page) {
  std::string head = short_class_of(exception);
  if (!exception.message.is_present()) return head;
  head += ": " + shortened(exception.message.view(), page.columns);
  if (exception.message.is_cut()) head += "\xE2\x80\xA6";
  return head;
}

// Its lines without the id: equal ones come to one entry.
using Lines = std::array<std::string, lines_each>;

struct Entry {
  NodeId first;
  std::int64_t count;
  Lines lines;
};

// What nobody caught explains most.
std::vector<Entry> entries_of(const SummaryFacts& facts, const PageSize& page) {
  std::vector<Entry> entries;
  std::map<Lines, std::size_t> known;
  for (const bool is_uncaught : {true, false}) {
    for (const Exception& exception : facts.thrown) {
      if (exception.is_uncaught() != is_uncaught) continue;
      Lines lines = {head_of(exception, page), origin_line(facts, exception, page),
                     end_line(facts, exception)};
      const auto [place, is_new] = known.try_emplace(lines, entries.size());
      if (is_new) entries.push_back({exception.first_thrower(), 0, std::move(lines)});
      ++entries[place->second].count;
    }
  }
  return entries;
}

}  // namespace

SectionText exceptions_text(const SummaryFacts& facts, const PageSize& page) {
  SectionText text;
  if (facts.thrown.empty()) return text;
  text.title = "Exceptions: " + as_count(static_cast<std::int64_t>(facts.thrown.size()));
  std::int64_t uncaught = 0;
  for (const Exception& exception : facts.thrown) uncaught += exception.is_uncaught() ? 1 : 0;
  const bool are_several = facts.thrown.size() > 1;
  if (uncaught != 0) {
    text.title += are_several
                      ? ", first those not caught (" + as_count(uncaught) + "), then by time"
                      : std::string(", not caught");
  } else if (are_several) {
    text.title += ", by time";
  }
  text.more = "cttool summary FILE --full";
  for (const Entry& entry : entries_of(facts, page)) {
    if (text.lines.size() == lines_each * page.most(usual_shown)) {
      ++text.left_out;
      continue;
    }
    std::string head = "  " + id_text(entry.first) + " ";
    if (entry.count > 1) head += "\xC3\x97 " + as_count(entry.count) + " ";
    text.lines.push_back(head + entry.lines[0]);
    text.lines.insert(text.lines.end(), entry.lines.begin() + 1, entry.lines.end());
  }
  text.lines_each = lines_each;
  text.least = 2 * lines_each;
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
