// SPDX-License-Identifier: MIT
//
// A small trace with something of everything: each type of checkpoint, each kind of value, common
// fields, nested calls, a repaired nesting, texts that are no UTF-8. It is well-formed, so whatever
// is damaged in it is the work of the test that uses it.
#pragma once

#include "trace_builder.h"

namespace CT::Test {

TraceBuilder rich_trace(ByteOrder order);

}  // namespace CT::Test
