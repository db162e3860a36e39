// SPDX-License-Identifier: MIT
//
// Calls that were made again: of one function with equal arguments, and on the same object. Equal
// is what the trace holds of them, byte by byte: texts that were cut are equal where what is left
// of them and their sizes are, objects where class and handle are. In a damaged record whatever
// stands behind the arguments counts as well.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT {

// What the trace holds of their results, byte by byte as well: returned values, or what was thrown.
// An object is told by its class and handle here too, and PHP gives the handles of objects that are
// gone to new ones: equal calls with equal results may still not have done the same.
enum class Results : std::uint8_t {
  same,     // each returned the same value, of none of the kinds below, or threw the same
  handle,   // each returned an object of one class and handle, or a resource
  none,     // each returned null or nothing
  unknown,  // some of them have no end; all others are the same
  differ,
};

// Calls that are equal, at least two.
struct Repeat {
  std::int32_t function;  // its place in the trace's functions
  NodeId first;           // the first of them
  std::int32_t calls;
  Results results;
  std::int64_t total_ns;    // of all of them; as much as fits
  std::int64_t slowest_ns;  // of the slowest

  // What all but the slowest took.
  [[nodiscard]] std::int64_t spare_ns() const { return total_ns - slowest_ns; }
};

// Those with most to spare first, and behind all others those whose results differ; alike ones in
// the order of their first calls. Takes time in proportion to what the calls hold, whatever they
// hold, and some 10 bytes for each node and 32 for each repeat while it works. Throws
// std::bad_alloc.
std::vector<Repeat> repeats(const Trace& trace, const Measures& measures);

// "same", "handle", "none", "unknown" or "differ".
std::string_view word_of(Results results);

}  // namespace CT
