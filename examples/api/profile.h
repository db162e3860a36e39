// SPDX-License-Identifier: MIT
//
// How often the functions of a request were called, and how much time each took by itself.
#pragma once

#include <codetrace/codetrace.h>

#include <cstdint>
#include <vector>

struct Figures {
  std::int64_t calls = 0;
  double own_ms = 0;
};

// For each of trace.functions(), at the same place. A call's own time is what it took less what the
// nodes right inside it took. A call that never ended has no time; what it called is taken off the
// caller's.
inline std::vector<Figures> profile(const CT::Trace& trace) {
  std::vector<Figures> functions(trace.functions().size());
  // For each node, whose own time its children's time is taken off: null for nobody's.
  std::vector<Figures*> owners;
  for (CT::NodeId id = 0; id != trace.node_count(); ++id) {
    const CT::Node::Base node = trace.node(id);
    const int parent = node.parent_id();
    Figures* caller = parent >= 0 ? owners[static_cast<std::size_t>(parent)] : nullptr;
    Figures* own = nullptr;
    if (const auto call = node.begin_as<CT::Checkpoint::FunctionCall>()) {
      own = &functions[static_cast<std::size_t>(call->function()->index())];
      ++own->calls;
      own->own_ms += node.ms_delta();
    }
    if (caller != nullptr) caller->own_ms -= node.ms_delta();
    owners.push_back(node.is_complete() ? own : caller);
  }
  return functions;
}
