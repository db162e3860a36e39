// SPDX-License-Identifier: MIT
//
// Calls that were made again: of one function with equal arguments, and on the same object. Equal
// is what the trace holds of them, byte by byte: texts that were cut are equal where what is left
// of them and their sizes are, objects where class and handle are. In a damaged record whatever
// stands behind the arguments counts as well.
#pragma once

#include <cstdint>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT {

// Calls that are equal, at least two.
struct Repeat {
  std::int32_t function;  // its place in the trace's functions
  NodeId first;           // the first of them
  std::int32_t calls;
  std::int64_t total_ns;  // of all of them; as much as fits
};

// In the order of their first calls. Takes time in proportion to what the calls hold, whatever they
// hold, and at most sixteen bytes a call while it works. Throws std::bad_alloc.
std::vector<Repeat> repeats(const Trace& trace, const Measures& measures);

}  // namespace CT
