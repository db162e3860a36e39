// SPDX-License-Identifier: MIT
//
// What a trace as a whole says of its request: what was asked, when, and what it came to.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT {

struct RequestFacts {
  std::uint32_t request_id = 0;
  std::uint32_t php_api = 0;
  // Borrow from the trace. Absent where the trace has no begin of the request.
  Checkpoint::String url;  // the final one, after rewriting
  Checkpoint::String uri;  // as it was asked
  Checkpoint::String host;
  Checkpoint::String method;
  std::optional<KTime::Timestamp> started;
  std::int64_t total_ns = 0;
  std::optional<std::uint64_t> memory;  // at the begin
  // The most that is known to have been in use, and the first node at whose begin or end it was.
  std::optional<std::uint64_t> memory_peak;
  NodeId peak_node = Storage::no_node;
  std::int32_t calls = 0;
  std::int32_t errors = 0;  // of PHP, of any level
  std::int32_t open = 0;    // spans without end
  std::uint32_t depth = 0;  // of the deepest node
  // The request has begun and ended, and nothing about the file is damaged or odd.
  bool is_complete = false;
};

// Borrows nothing of the measures.
RequestFacts request_facts(const Trace& trace, const Measures& measures);

// Places that are damaged or odd, as far as reading found any.
std::int64_t damaged_places(const Summary& found);

// Such as "2026-05-17T09:30:00.000000123Z" (ISO 8601, UTC); empty for a time that no such text has:
// before the year 0 or after 9999.
std::string iso_time(const KTime::Timestamp& time);

}  // namespace CT
