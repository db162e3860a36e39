// SPDX-License-Identifier: MIT
//
// The table of all worst cases: what each output costs at n and at 2n. Files are written to TMPDIR
// by processes of their own and removed again.
#pragma once

#include <string>
#include <vector>

namespace CT::Bench {

// Measures the cases of these names, or all if there are none, and ranks them by what a byte costs.
// Returns 1, and says why, if a run crashed, met its limit or grew faster than its file.
int run_table(const std::string& tool, bool quick, const std::vector<std::string>& names);

}  // namespace CT::Bench
