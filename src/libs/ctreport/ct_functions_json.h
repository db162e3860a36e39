// SPDX-License-Identifier: MIT
//
// The functions of a trace with what their calls come to, as an object of columns.
#pragma once

#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_profile.h"
#include "ctreport/ct_text_numbers.h"

namespace CT::Report {

// `name`, `file` (a number of `files`, -1 for none), `line` (0 for none), `builtin` (0 or 1),
// `calls`, `total_ns`, `own_ns`, `own_memory`. Requires: a row for each function.
void write_functions(const Trace& trace, const std::vector<ProfileRow>& rows, TextNumbers& files,
                     Writer& out);

}  // namespace CT::Report
