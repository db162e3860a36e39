// SPDX-License-Identifier: MIT
//
// A trace as readable text: one statement a line, turned into the bytes of a trace file by
// TraceBuilder. The language is described in tests/cli/README.md. A mistake in the text is thrown
// as TextError with the number of its line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fields.h"
#include "text_scanner.h"

namespace CT::Test {

struct BuiltTrace {
  ByteOrder order;
  std::string bytes;
};

// One file for each byte order that the text asks for: both, unless it says `order little` or
// `order big`.
std::vector<BuiltTrace> build_traces(std::string_view text);

}  // namespace CT::Test
