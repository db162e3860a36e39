// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_redact_report.h"

#include <utility>
#include <vector>

#include "codetrace/render/ct_json.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

using Redact::Place;
using Redact::Tally;

std::string_view name_of(Place place) {
  return Redact::place_names[static_cast<std::size_t>(place)];
}

std::string shown_nodes(const Tally::Row& row) {
  std::string text;
  for (const std::int32_t node : row.nodes) {
    if (!text.empty()) text += ' ';
    text += '#';
    text += std::to_string(node);
  }
  if (row.nodes.size() == Tally::most_nodes && row.count > row.nodes.size()) text += " …";
  return text;
}

}  // namespace

void print_redact_report(const Redact::Rules& rules, const Redact::Redactor& redactor,
                         std::size_t width, std::FILE* to) {
  const Tally& tally = redactor.tally();
  if (tally.total() == 0) {
    std::fprintf(to, "nothing was masked\n");
    return;
  }
  TextTable table({{"masked", TextTable::Align::right},
                   {"rule", TextTable::Align::left},
                   {"in", TextTable::Align::left},
                   {"nodes", TextTable::Align::left}});
  for (const auto& [what, row] : tally.rows()) {
    const auto& [rule, place] = what;
    table.add({as_count(static_cast<std::int64_t>(row.count)), shown_text(rules.label(rule)),
               std::string(name_of(place)), shown_nodes(row)});
  }
  std::fputs(table.text(width).c_str(), to);
  std::fprintf(to, "%s values masked; secrets that were looked for everywhere: %s\n",
               as_count(static_cast<std::int64_t>(tally.total())).c_str(),
               as_count(static_cast<std::int64_t>(redactor.secret_count())).c_str());
}

void write_redact_json(const std::string& trace, const std::string& output,
                       const Redact::Rules& rules, const Redact::Redactor& redactor, Writer& out) {
  JsonWriter json(out);
  json.begin_object();
  json.key("schema");
  json.word("cttool.redact/1");
  put_text(json, "trace", trace);
  put_text(json, "output", output);
  json.key("masked");
  json.number(static_cast<std::int64_t>(redactor.tally().total()));
  json.key("secrets");
  json.number(static_cast<std::int64_t>(redactor.secret_count()));
  json.key("rules");
  json.begin_array();
  for (const auto& [what, row] : redactor.tally().rows()) {
    json.element();
    json.begin_object();
    put_text(json, "rule", rules.label(what.first));
    json.key("place");
    json.word(name_of(what.second));
    json.key("masked");
    json.number(static_cast<std::int64_t>(row.count));
    json.key("nodes");
    json.begin_array();
    for (const std::int32_t node : row.nodes) {
      json.element();
      json.number(std::int64_t{node});
    }
    json.end_array();
    json.end_object();
  }
  json.end_array();
  json.end_object();
  out.put('\n');
}

}  // namespace CT::Tool
