// SPDX-License-Identifier: MIT
//
// What salvaging a trace came to, in words and as JSON.
#pragma once

#include <string>

#include "ctsalvage/ct_salvage.h"

namespace CT {
class Writer;
}

namespace CT::Tool {

// As they were given on the command line.
struct SalvageNames {
  const std::string& trace;
  const std::string& output;
};

// Lines for people. Of places of one kind the first few are listed.
std::string salvage_text(const Salvage::Salvaged& made, const SalvageNames& names);
void write_salvage_json(const Salvage::Salvaged& made, const SalvageNames& names, Writer& out);

}  // namespace CT::Tool
