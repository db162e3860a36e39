// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_summary_json.h"

#include "tools/cttool/ct_summary_section.h"

namespace CT::Tool {

void write_summary_json(const std::string& file, const SummaryFacts& facts, JsonWriter::Form form,
                        Writer& out) {
  JsonWriter json(out, form);
  json.begin_object();
  json.key("schema");
  json.word("cttool.summary/1");
  put_text(json, "trace", file);
  for (const Section& section : sections()) section.json(facts, json);
  json.end_object();
  out.put('\n');
}

}  // namespace CT::Tool
