// SPDX-License-Identifier: MIT
//
// Values that the tracer cut and on which something above depends.
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"

namespace CT::Tool {

namespace {

struct Cut {
  std::int64_t count = 0;
  NodeId first = Storage::no_node;

  void add(NodeId id) {
    if (count++ == 0) first = id;
  }
};

struct Cuts {
  Cut queries;     // SQL texts
  Cut exceptions;  // messages
  Cut writes;      // output
};

Cuts cuts_of(const SummaryFacts& facts) {
  Cuts cuts;
  for (const Query& query : facts.said) {
    if (query.text.is_cut()) cuts.queries.add(query.id);
  }
  for (const Exception& exception : facts.thrown) {
    if (exception.message.is_cut()) cuts.exceptions.add(exception.first_thrower());
  }
  for (const BodyPart& part : facts.response.writes()) {
    if (part.missing() != 0) cuts.writes.add(part.id);
  }
  return cuts;
}

}  // namespace

bool has_cuts(const SummaryFacts& facts) {
  const Cuts cuts = cuts_of(facts);
  return cuts.queries.count + cuts.exceptions.count + cuts.writes.count != 0;
}

SectionText cut_text(const SummaryFacts& facts, const PageSize& /*page*/) {
  const Cuts cuts = cuts_of(facts);
  SectionText text;
  const auto add = [&](const Cut& cut, const std::string& what) {
    if (cut.count == 0) return;
    std::string line = "  " + what;
    line.insert(line.find(':'),
                " (" + as_count(cut.count) + ", the first is " + id_text(cut.first) + ")");
    text.lines.push_back(std::move(line));
  };
  add(cuts.queries, "SQL texts: those that look alike may differ");
  add(cuts.exceptions, "messages of exceptions: their ends are missing");
  add(cuts.writes, "output: not all of it is here");
  text.title = "Cut by the tracer";
  text.more = "cttool show FILE ID";
  return text;
}

void cut_json(const SummaryFacts& facts, JsonWriter& json) {
  const Cuts cuts = cuts_of(facts);
  json.key("cut");
  json.begin_object();
  const auto put = [&](const char* key, const Cut& cut) {
    json.key(key);
    json.begin_object();
    put_number(json, "count", cut.count);
    put_id(json, "first", cut.first);
    json.end_object();
  };
  put("queries", cuts.queries);
  put("exceptions", cuts.exceptions);
  put("writes", cuts.writes);
  json.end_object();
}

}  // namespace CT::Tool
