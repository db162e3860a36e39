// SPDX-License-Identifier: MIT
//
// Worst cases: traces that are built to make a reader work as hard as their bytes allow, each with
// a size parameter n, so that the same shape can be made twice as large. Nothing here recurses or
// knows the library that is measured; what is wrong in a trace is wrong on purpose.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "trace_builder.h"

namespace CT::Bench {

struct WorstCase {
  std::string_view name;
  // What grows with n.
  std::string_view what;
  // The smaller of the two sizes that are measured. Where one payload is the limit, 2n fills it.
  std::size_t n;
  // The outputs (T, J, D) that are larger than any multiple of the file by definition: indentation
  // of deep trees and values, and texts that many records share.
  std::string_view multiplied;
  void (*write)(std::size_t n, Test::TraceBuilder& trace);
};

// Values within one payload; maps; the tree; references, counts and lengths.
const std::vector<WorstCase>& value_cases();
const std::vector<WorstCase>& key_cases();
const std::vector<WorstCase>& tree_cases();
const std::vector<WorstCase>& reference_cases();

// All of them, in the order of the table.
std::vector<WorstCase> worst_cases();

}  // namespace CT::Bench
