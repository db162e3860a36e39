// SPDX-License-Identifier: MIT
//
// The last node under another one, for whoever goes through a trace once: CT::Trace keeps the shape
// of the whole tree as soon as somebody asks for it, in 8 bytes a node.
#pragma once

#include "codetrace/ct_trace.h"

namespace CT {

// Found in steps that grow with the logarithm of what lies under the node; the node itself if
// nothing does. `limit`: the last node under the one around it, or of the trace.
inline NodeId last_under(const Trace& trace, NodeId id, NodeId limit) {
  const bool has_children = id < limit && trace.parent(id + 1) == id;
  if (!has_children) return id;
  // What began before a node ended lies under it; what never ended goes on as long as what is
  // around it.
  const std::uint32_t end = trace.end_offset(id);
  if (end == Storage::no_end) return limit;
  NodeId within = id;  // begins before the end
  NodeId step = 1;
  while (limit - within > step && trace.begin_offset(within + step) < end) {
    within += step;
    step *= 2;
  }
  NodeId behind = limit - within > step ? within + step : limit + 1;
  while (behind - within > 1) {
    const NodeId middle = within + (behind - within) / 2;
    (trace.begin_offset(middle) < end ? within : behind) = middle;
  }
  return within;
}

}  // namespace CT
