// SPDX-License-Identifier: MIT
//
// What an export is made of, and how the user wants it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_node_set.h"

namespace CT::Export {

// All of it is borrowed.
struct Source {
  const Trace& trace;
  const Measures& measures;
  // Others are left out; what lies under one that is left out moves up to the node around it, and
  // so does its time.
  const NodeSet& chosen;
  std::string_view path;  // of the trace, as the user wrote it
};

// What one line of a format that has a single figure a line tells of a span.
enum class Weight : std::uint8_t {
  own,     // nanoseconds that it took by itself
  memory,  // bytes by which memory grew in it, by itself
  calls,   // 1 for a call
};

// How much of arguments, results and texts.
enum class Values : std::uint8_t { none, brief, full };

struct Options {
  Weight weight = Weight::own;
  Values values = Values::full;
  std::string table = {};  // one of ctsql's; empty for the usual ones
};

}  // namespace CT::Export
