// SPDX-License-Identifier: MIT
//
// A summary as a document of JSON: what all its sections have to say.
#pragma once

#include <string>

#include "codetrace/render/ct_json.h"
#include "tools/cttool/ct_summary_facts.h"

namespace CT::Tool {

// `file`: the trace as the user named it.
void write_summary_json(const std::string& file, const SummaryFacts& facts, JsonWriter::Form form,
                        Writer& out);

}  // namespace CT::Tool
