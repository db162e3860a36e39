// SPDX-License-Identifier: MIT
//
// What holds of a report, whatever the trace says.
#pragma once

#include "ctexport/ct_export_source.h"

namespace CT::Fuzz {

// Every stream unpacks, every column has an entry for each node that it is about, numbers are of
// texts that are there, values are JSON, and no report is larger than it may be.
void check_report(const Export::Source& source);

}  // namespace CT::Fuzz
