// SPDX-License-Identifier: MIT
//
// Output that came before headers: those are lost, because the headers went out with it.
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

std::vector<HeaderStep> late_steps(const SummaryFacts& facts) {
  std::vector<HeaderStep> late;
  for (const HeaderStep& step : facts.response.steps()) {
    if (step.fate == HeaderStep::Fate::too_late) late.push_back(step);
  }
  return late;
}

}  // namespace

SectionText headers_text(const SummaryFacts& facts, const PageSize& page) {
  constexpr std::size_t usual_lines = 5;
  constexpr std::size_t place_room = 24;
  SectionText text;
  const std::vector<HeaderStep> late = late_steps(facts);
  if (late.empty()) return text;
  const NodeId sent = facts.response.sent_by();
  const auto& writes = facts.response.writes();
  text.title = "Output before headers: " + as_count(static_cast<std::int64_t>(late.size()));
  text.title += " lost; they were sent by " + id_text(sent);
  if (!writes.empty()) text.title += ", the first output is " + id_text(writes.front().id);
  for (const HeaderStep& step : late) {
    if (text.lines.size() == page.most(usual_lines)) break;
    std::string line = "  " + id_text(step.id) + " ";
    const std::size_t room = page.room_behind(line + std::string(place_room, ' '));
    line +=
        step.line.data != nullptr ? shortened(step.line.view(), room) : std::string("an operation");
    text.lines.push_back(at_place(line, facts.lines.place(step.id), page));
  }
  text.left_out = late.size() - text.lines.size();
  text.more = "cttool response FILE";
  return text;
}

void headers_json(const SummaryFacts& facts, JsonWriter& json) {
  json.key("late_headers");
  json.begin_array();
  for (const HeaderStep& step : late_steps(facts)) {
    json.element();
    json.begin_object();
    put_id(json, "id", step.id);
    put_text(json, "header", step.line);
    put_place(json, facts.trace, step.id);
    json.end_object();
  }
  json.end_array();
}

}  // namespace CT::Tool
